#include "Fundo3/File/DefaultFileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "Fundo3/File/StreamBuffers.h"
#include "Fundo3/Report.h"
#include "Platform/DiskSpace.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/File";

namespace {

constexpr char kFopen[] = "virtual void *Tovra::Fundo::FileDefaultOpt::fopen(const char *, const char *)";

FILE* stream(void* fp) { return static_cast<FILE*>(fp); }

// A null path names nothing, as an empty one does: the system's calls need not take null.
const char* named(const char* path) { return path != nullptr ? path : ""; }

DIR* directory(long handle) { return reinterpret_cast<DIR*>(handle); }

// The letters count wherever they stand.
int openFlags(const char* mode) {
    const auto has = [mode](char letter) { return std::strchr(mode, letter) != nullptr; };
    int flags = 0;
    if (has('a')) flags |= O_APPEND;
    if (!has('r')) flags |= O_CREAT;
    if (has('w')) flags |= O_TRUNC;
    if (has('e')) flags |= O_CLOEXEC;
    if (has('+')) {
        flags |= O_RDWR;
    } else if (!has('r') && (has('w') || has('a'))) {
        flags |= O_WRONLY;
    }
    return flags;
}

void copyName(FileInfo& info, const char* name) {
    std::memset(info.name, 0, sizeof info.name);
    std::strncpy(info.name, name, sizeof info.name - 1);
}

void copyStatus(FileInfo& info, const struct ::stat& status) {
    info.size = status.st_size;
    info.time_write = static_cast<uint64_t>(status.st_mtime);
    info.time_access = static_cast<uint64_t>(status.st_atime);
    info.time_create = static_cast<uint64_t>(status.st_ctime);
}

uint16_t listedAttributes(const struct ::stat& status) {
    const bool readOnly = (status.st_mode & S_IWUSR) == 0;
    return static_cast<uint16_t>((S_ISDIR(status.st_mode) ? 0x10 : 0) | (readOnly ? 0x01 : 0));
}

// The next entry whose record is below the size of FileInfo::name; longer names are passed over.
const dirent* nextEntry(DIR* dir) {
    const dirent* entry = ::readdir(dir);
    while (entry != nullptr && entry->d_reclen >= sizeof(FileInfo::name))
        entry = ::readdir(dir);
    return entry;
}

}  // namespace

// A thread may still write to the log file while the process exits.
FUNDO_DEFINE_LASTING_INSTANCE(FileDefaultOpt)

void* FileDefaultOpt::fopen(const char* path, const char* mode) {
    FUNDO_ASSERT_IN(mode != NULL, kFopen);
    const size_t len = std::strlen(mode);
    FUNDO_ASSERT_IN(len > 0, kFopen);
    std::string text(mode, len);
    const size_t direct = text.find('d');
    if (direct != std::string::npos) text.erase(direct, 1);

    const int fd = ::open(named(path), openFlags(mode), 0666);
    if (fd < 0) return nullptr;
    FILE* file = ::fdopen(fd, text.c_str());
    // Contract: the descriptor stays open when fdopen fails; errno is fdopen's.
    if (file == nullptr) return nullptr;
    Detail::attachStreamBuffer(file);
    return file;
}

int FileDefaultOpt::fclose(void* fp) { return Detail::closeBufferedStream(stream(fp)); }

size_t FileDefaultOpt::fread(void* buf, size_t size, size_t count, void* fp) {
    return std::fread(buf, size, count, stream(fp));
}

size_t FileDefaultOpt::fwrite(const void* buf, size_t size, size_t count, void* fp) {
    return std::fwrite(buf, size, count, stream(fp));
}

int FileDefaultOpt::fflush(void* fp) {
    std::fflush(stream(fp));
    return ::fsync(::fileno(stream(fp)));
}

int FileDefaultOpt::fseek(void* fp, long offset, int whence) {
    return std::fseek(stream(fp), offset, whence);
}

long FileDefaultOpt::ftell(void* fp) { return std::ftell(stream(fp)); }

char* FileDefaultOpt::fgets(char* buf, int size, void* fp) { return std::fgets(buf, size, stream(fp)); }

int FileDefaultOpt::fputs(const char* text, void* fp) { return std::fputs(text, stream(fp)); }

int FileDefaultOpt::rename(const char* oldPath, const char* newPath) {
    return std::rename(named(oldPath), named(newPath));
}

int FileDefaultOpt::remove(const char* path) { return std::remove(named(path)); }

long FileDefaultOpt::findfirst(const char* pattern, FileInfo& info) {
    char path[1024] = {};
    const size_t length = std::strlen(named(pattern));
    std::strncpy(path, named(pattern), sizeof path - 1);
    if (length > 0 && length < sizeof path && path[length - 1] == '*') path[length - 1] = '\0';

    DIR* dir = ::opendir(path);
    if (dir == nullptr) return -1;
    const long handle = reinterpret_cast<long>(dir);
    if (findnext(handle, info) >= 0) return handle;
    ::closedir(dir);
    return -1;
}

int FileDefaultOpt::findnext(long handle, FileInfo& info) {
    if (handle == 0) return -1;
    const dirent* entry = nextEntry(directory(handle));
    if (entry == nullptr) return -1;

    char path[sizeof info.name] = {};
    const size_t room = sizeof path - 1;  // Contract: at most 258 characters of a joined path are used.
    const size_t folder = ::strnlen(info.name, sizeof info.name);
    std::snprintf(path, room, "%.*s/%s", static_cast<int>(folder), info.name, entry->d_name);
    struct ::stat status;
    if (::stat(path, &status) != 0) {
        FUNDO_REPORT_THIS(Detail::kWarn, "FileDefaultOpt::findnext, stat failed ,err: %s\n",
                          std::strerror(errno));
        return -1;
    }
    copyName(info, entry->d_name);
    copyStatus(info, status);
    info.attrib = listedAttributes(status);
    return 0;
}

int FileDefaultOpt::findclose(long handle) {
    if (handle == 0) return -1;
    ::closedir(directory(handle));
    return 0;
}

int FileDefaultOpt::mkdir(const char* path) { return ::mkdir(named(path), 0777); }

int FileDefaultOpt::rmdir(const char* path) { return ::rmdir(named(path)); }

int FileDefaultOpt::statfs(const char* path, unsigned long long& userFreeBytes,
                           unsigned long long& totalBytes, unsigned long long& freeBytes) {
    Platform::DiskSpace space = {};
    const int result = Platform::diskSpace(named(path), space);
    userFreeBytes = space.userFree;
    totalBytes = space.total;
    freeBytes = space.free;
    return result;
}

int FileDefaultOpt::access(const char* path, int mode) { return ::access(named(path), mode); }

int FileDefaultOpt::stat(const char* path, FileInfo& info) {
    struct ::stat status;
    const int result = ::stat(named(path), &status);
    if (result != 0) return result;
    copyName(info, path);
    copyStatus(info, status);
    info.attrib = static_cast<uint16_t>(status.st_mode);
    return 0;
}

long FileDefaultOpt::writev(int, const io_vec*, int) { return -1; }

int FileDefaultOpt::fseek64(void* fp, long long offset, int whence) {
    return ::fseeko(stream(fp), offset, whence);
}

long long FileDefaultOpt::ftell64(void* fp) { return ::ftello(stream(fp)); }

}  // namespace Tovra::Fundo

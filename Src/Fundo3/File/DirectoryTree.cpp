#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "Fundo/Fundo3/File.h"
#include "Fundo/Fundo3/FileFind.h"
#include "Fundo3/File/DefaultFileSystem.h"
#include "Fundo3/File/FileBody.h"

// Whole directory trees, made and removed.

namespace Tovra::Fundo {

static constexpr const char* kSource = Detail::kFileSource;

namespace {

bool isValid(const char* path, const char* function) {
    if (path != nullptr && path[0] != '\0') return true;
    if (Detail::isLevelOpen(Detail::kWarn)) {
        Detail::reportStatic(Detail::kWarn, {kSource, function, __LINE__}, "the path is unvalid");
    }
    return false;
}

bool endsWith(const char* text, const char* end) {
    const size_t length = std::strlen(text);
    const size_t tail = std::strlen(end);
    return length >= tail && std::strcmp(text + length - tail, end) == 0;
}

// Only the default file system has links. One that points at a directory is listed as a directory.
bool isLink(const char* path) {
    struct ::stat status;
    return _findOpts(path) == FileDefaultOpt::instance() && ::lstat(path, &status) == 0 &&
           S_ISLNK(status.st_mode);
}

void removeEntry(CFileFind& entry) {
    const std::string name = entry.getFileName();
    if (name == "." || name == "..") return;
    const std::string path = entry.getFilePath();
    if (entry.isDirectory() && !isLink(path.c_str())) {
        CFile::removeDirectoryRecursively(path.c_str(), true);
    } else {
        CFile::remove(path.c_str());
    }
}

}  // namespace

bool CFile::makeDirectoryRecursively(const char* path) {
    if (!isValid(path, __FUNCTION__)) return false;
    std::string whole = path;
    if (whole.back() == '/') whole.pop_back();
    for (size_t slash = whole.find('/'); slash != std::string::npos; slash = whole.find('/', slash + 1)) {
        const std::string part = whole.substr(0, slash);
        if (!part.empty()) makeDirectory(part.c_str());
    }
    return makeDirectory(whole.c_str());
}

bool CFile::removeDirectoryRecursively(const char* path, bool removeSelf) {
    if (!isValid(path, __FUNCTION__)) return false;
    char pattern[1024];
    const char* form = endsWith(path, "/") ? "%s*" : endsWith(path, "/*") ? "%s" : "%s/*";
    const int length = std::snprintf(pattern, sizeof pattern, form, path);

    CFileFind entry;
    // A cut pattern might name another directory.
    if (length >= static_cast<int>(sizeof pattern) || !entry.findFile(pattern)) {
        FUNDO_REPORT_STATIC(Detail::kWarn, "the path does not exist");
        return false;
    }
    do {
        removeEntry(entry);
    } while (entry.findNextFile());
    entry.close();
    if (!removeSelf) return true;

    pattern[std::strlen(pattern) - 1] = '\0';
    return removeDirectory(pattern);
}

}  // namespace Tovra::Fundo

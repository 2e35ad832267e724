// Tables of functions as file systems, and the table of those that are hooked.
#include "Fundo/FSOperation.h"

#include <cstring>

#include "Fundo/Fundo3/Detail/PlatformAssert.h"

using Tovra::Fundo::FileInfo;

static constexpr char kSource[] = "Src/FSOperation";

namespace {

constexpr int kFirstSlot = 1;  // Contract: slot 0 is never used, so 31 tables can be hooked.
constexpr int kSlots = 32;
constexpr size_t kPathSize = 32;

char fsPaths[kSlots][kPathSize];  // a slot is free when its path is empty
CFSOperation* fsOpts[kSlots];

// The slot whose stored path equals a text over the stored size; 0 if there is none.
int findSlot(const char* path) {
    for (int i = kFirstSlot; i < kSlots; ++i) {
        if (std::strncmp(fsPaths[i], path, kPathSize) == 0) return i;
    }
    return 0;
}

void hook(const char* path, const FSOperations& operations) {
    const int i = findSlot("");
    if (i == 0) return;
    std::strncpy(fsPaths[i], path, kPathSize - 1);
    FUNDO_PLATFORM_ASSERT(fsOpts[i] == NULL, kSource);
    fsOpts[i] = new CFSOperation(operations);
    // Contract: the whole path is hooked, although a long one is stored cut and so is never found again.
    Tovra::Fundo::hookFileSystem(path, fsOpts[i]);
}

void unhook(const char* path) {
    const int i = findSlot(path);
    if (i == 0) return;
    // First of all, so that nobody finds an object that is gone.
    Tovra::Fundo::hookFileSystem(path, nullptr);
    fsPaths[i][0] = '\0';
    delete fsOpts[i];
    fsOpts[i] = nullptr;
}

}  // namespace

void hookFS(const char* path, const FSOperations* ops) {
    if (path == nullptr) return;
    if (ops != nullptr) {
        hook(path, *ops);
    } else {
        unhook(path);
    }
}

CFSOperation::CFSOperation(const FSOperations& operations) : m_operations(operations) {}

void* CFSOperation::fopen(const char* path, const char* mode) { return m_operations.fopen(path, mode); }

int CFSOperation::fclose(void* fp) { return m_operations.fclose(fp); }

size_t CFSOperation::fread(void* buf, size_t size, size_t count, void* fp) {
    return m_operations.fread(buf, size, count, fp);
}

size_t CFSOperation::fwrite(const void* buf, size_t size, size_t count, void* fp) {
    return m_operations.fwrite(buf, size, count, fp);
}

int CFSOperation::fflush(void* fp) { return m_operations.fflush(fp); }

int CFSOperation::fseek(void* fp, long offset, int whence) { return m_operations.fseek(fp, offset, whence); }

long CFSOperation::ftell(void* fp) { return m_operations.ftell(fp); }

char* CFSOperation::fgets(char* buf, int size, void* fp) { return m_operations.fgets(buf, size, fp); }

int CFSOperation::fputs(const char* text, void* fp) { return m_operations.fputs(text, fp); }

int CFSOperation::rename(const char* oldPath, const char* newPath) {
    return m_operations.rename(oldPath, newPath);
}

int CFSOperation::remove(const char* path) { return m_operations.remove(path); }

long CFSOperation::findfirst(const char* pattern, FileInfo& info) {
    return m_operations.findfirst(pattern, info);
}

int CFSOperation::findnext(long handle, FileInfo& info) { return m_operations.findnext(handle, info); }

int CFSOperation::findclose(long handle) { return m_operations.findclose(handle); }

int CFSOperation::mkdir(const char* path) { return m_operations.mkdir(path); }

int CFSOperation::rmdir(const char* path) { return m_operations.rmdir(path); }

int CFSOperation::statfs(const char* path, unsigned long long& userFreeBytes, unsigned long long& totalBytes,
                         unsigned long long& freeBytes) {
    return m_operations.statfs(path, userFreeBytes, totalBytes, freeBytes);
}

int CFSOperation::access(const char* path, int mode) { return m_operations.access(path, mode); }

int CFSOperation::stat(const char* path, FileInfo& info) { return m_operations.stat(path, info); }

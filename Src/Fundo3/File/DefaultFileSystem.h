#pragma once

#include "Fundo/Fundo3/FileSystem.h"
#include "Fundo3/Instance.h"

namespace Tovra::Fundo {

// The file system of every path that no hook serves: POSIX stdio and directory calls, with a few deliberate
// differences that its source names. File handles are FILE*, listing handles are DIR*.
class FileDefaultOpt : public IFileSystem {
public:
    static FileDefaultOpt* instance();

    void* fopen(const char* path, const char* mode) override;
    int fclose(void* fp) override;
    size_t fread(void* buf, size_t size, size_t count, void* fp) override;
    size_t fwrite(const void* buf, size_t size, size_t count, void* fp) override;
    int fflush(void* fp) override;
    int fseek(void* fp, long offset, int whence) override;
    long ftell(void* fp) override;
    char* fgets(char* buf, int size, void* fp) override;
    int fputs(const char* text, void* fp) override;
    int rename(const char* oldPath, const char* newPath) override;
    int remove(const char* path) override;
    long findfirst(const char* pattern, FileInfo& info) override;
    int findnext(long handle, FileInfo& info) override;
    int findclose(long handle) override;
    int mkdir(const char* path) override;
    int rmdir(const char* path) override;
    int statfs(const char* path, unsigned long long& userFreeBytes, unsigned long long& totalBytes,
               unsigned long long& freeBytes) override;
    int access(const char* path, int mode) override;
    int stat(const char* path, FileInfo& info) override;
    long writev(int fd, const io_vec* vec, int count) override;
    int fseek64(void* fp, long long offset, int whence) override;
    long long ftell64(void* fp) override;

private:
    friend class Detail::Instance<FileDefaultOpt, true>;
    FileDefaultOpt() = default;
};

}  // namespace Tovra::Fundo

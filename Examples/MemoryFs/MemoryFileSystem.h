#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Fundo/Fundo3/FileSystem.h"

// A file system in memory: files by their whole path, in one flat map; directories are not kept. Any thread
// may call any operation, but a handle serves one thread at a time, as in the C library.
class MemoryFileSystem : public Tovra::Fundo::IFileSystem {
public:
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
    long findfirst(const char* pattern, Tovra::Fundo::FileInfo& info) override;
    int findnext(long handle, Tovra::Fundo::FileInfo& info) override;
    int findclose(long handle) override;
    int mkdir(const char* path) override;
    int rmdir(const char* path) override;
    int statfs(const char* path, unsigned long long& userFreeBytes, unsigned long long& totalBytes,
               unsigned long long& freeBytes) override;
    int access(const char* path, int mode) override;
    int stat(const char* path, Tovra::Fundo::FileInfo& info) override;
    int fseek64(void* fp, long long offset, int whence) override;
    long long ftell64(void* fp) override;

private:
    using Content = std::vector<char>;

    // An open file. A removed file lives on until its last handle is closed.
    struct Handle {
        std::shared_ptr<Content> content;
        size_t position;
        bool append;
    };

    // A listing: what was there when it began.
    struct Listing {
        std::vector<std::pair<std::string, size_t>> entries;  // name and bytes
        size_t next = 0;
    };

    std::shared_ptr<Content> find(const std::string& path);

    std::mutex m_mutex;
    std::map<std::string, std::shared_ptr<Content>> m_files;
};

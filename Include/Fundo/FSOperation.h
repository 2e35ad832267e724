#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/FileSystem.h"

/// A file system as a table of functions. Each stands for the operation of that name of
/// Tovra::Fundo::IFileSystem and follows its rules; none may be null if it is to be called.
struct FSOperations {
    void* (*fopen)(const char* path, const char* mode);                      ///< See IFileSystem.
    int (*fclose)(void* fp);                                                 ///< See IFileSystem.
    size_t (*fread)(void* buf, size_t size, size_t count, void* fp);         ///< See IFileSystem.
    size_t (*fwrite)(const void* buf, size_t size, size_t count, void* fp);  ///< See IFileSystem.
    int (*fflush)(void* fp);                                                 ///< See IFileSystem.
    int (*fseek)(void* fp, long offset, int whence);                         ///< See IFileSystem.
    long (*ftell)(void* fp);                                                 ///< See IFileSystem.
    char* (*fgets)(char* buf, int size, void* fp);                           ///< See IFileSystem.
    int (*fputs)(const char* text, void* fp);                                ///< See IFileSystem.
    int (*rename)(const char* oldPath, const char* newPath);                 ///< See IFileSystem.
    int (*remove)(const char* path);                                         ///< See IFileSystem.
    long (*findfirst)(const char* pattern, Tovra::Fundo::FileInfo& info);    ///< See IFileSystem.
    int (*findnext)(long handle, Tovra::Fundo::FileInfo& info);              ///< See IFileSystem.
    int (*findclose)(long handle);                                           ///< See IFileSystem.
    int (*mkdir)(const char* path);                                          ///< See IFileSystem.
    int (*rmdir)(const char* path);                                          ///< See IFileSystem.
    int (*statfs)(const char* path, unsigned long long& userFreeBytes, unsigned long long& totalBytes,
                  unsigned long long& freeBytes);                 ///< See IFileSystem.
    int (*access)(const char* path, int mode);                    ///< See IFileSystem.
    int (*stat)(const char* path, Tovra::Fundo::FileInfo& info);  ///< See IFileSystem.
};

/// A table of functions as a file system. It keeps a copy of the table, and has no 64-bit positions and no
/// vector writes.
class FUNDO_API CFSOperation : public Tovra::Fundo::IFileSystem {
public:
    /// Copies the table.
    explicit CFSOperation(const FSOperations& operations);

    /// @cond
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
    /// @endcond

private:
    FSOperations m_operations;
};

/// Hooks a table of functions below a path prefix, or unhooks the first one of that prefix if ops is null.
///
/// The table is copied. There is room for 31; one more is dropped silently, as is the unhooking of an unknown
/// prefix. A prefix above 31 characters is hooked whole, but cannot be unhooked any more. A second hook
/// of the empty prefix ends the process ("fsOpts[i] == NULL"). Files that were opened through a table must be
/// closed before it is unhooked. Not for several threads at once.
/// @param path null does nothing
FUNDO_API void hookFS(const char* path, const FSOperations* ops);

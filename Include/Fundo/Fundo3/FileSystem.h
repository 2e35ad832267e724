#pragma once

#include <cstddef>
#include <cstdint>

#include "Fundo/Fundo3/Export.h"

/// @file
/// The file layer: one abstract file system, and hooks that place other file systems below a path prefix.

namespace Tovra::Fundo {

/// What is known of a file.
struct FileInfo {
    char name[260];   ///< entry name, at most 259 characters; the directory to search on entry to findnext()
    uint16_t attrib;  ///< from a listing: 0x01 read-only, 0x02 hidden, 0x10 directory; from stat(): st_mode
    uint64_t time_create;  ///< last change of status, seconds since 1970
    uint64_t time_access;  ///< last access, seconds since 1970
    uint64_t time_write;   ///< last change of content, seconds since 1970
    int64_t size;          ///< bytes
};

/// One piece of a vector write.
struct io_vec {
    void* base;     ///< first byte
    size_t length;  ///< bytes
};

/// A file system. An application derives from it and hooks it below a prefix. Results follow POSIX: 0 for
/// success, unless an operation says otherwise. File handles are the implementation's own.
class FUNDO_API IFileSystem {
public:
    virtual ~IFileSystem();

    /// Opens a file; mode is that of the C library, with "e" for close-on-exec and "d" for direct access
    /// added on demand. @return a handle, or null
    virtual void* fopen(const char* path, const char* mode) = 0;
    /// Closes a handle.
    virtual int fclose(void* fp) = 0;
    /// Reads up to count items. @return items read
    virtual size_t fread(void* buf, size_t size, size_t count, void* fp) = 0;
    /// Writes count items. @return items written
    virtual size_t fwrite(const void* buf, size_t size, size_t count, void* fp) = 0;
    /// Brings what was written to the device.
    virtual int fflush(void* fp) = 0;
    /// Moves the position; whence is 0 from the start, 1 from the position, 2 from the end.
    virtual int fseek(void* fp, long offset, int whence) = 0;
    /// The position, or -1.
    virtual long ftell(void* fp) = 0;
    /// Reads a line of at most size - 1 characters. @return buf, or null
    virtual char* fgets(char* buf, int size, void* fp) = 0;
    /// Writes a text. @return -1 on failure
    virtual int fputs(const char* text, void* fp) = 0;
    /// Renames a file.
    virtual int rename(const char* oldPath, const char* newPath) = 0;
    /// Removes a file.
    virtual int remove(const char* path) = 0;
    /// Begins a listing; info.name holds the directory. @return a handle, of which only -1 means none
    virtual long findfirst(const char* pattern, FileInfo& info) = 0;
    /// Goes on with a listing; info.name holds the directory. @return 0, or -1 at the end or on error
    virtual int findnext(long handle, FileInfo& info) = 0;
    /// Ends a listing.
    virtual int findclose(long handle) = 0;
    /// Makes a directory.
    virtual int mkdir(const char* path) = 0;
    /// Removes an empty directory.
    virtual int rmdir(const char* path) = 0;
    /// Tells the space of the file system that holds path, in bytes: for users, in all, and free.
    virtual int statfs(const char* path, unsigned long long& userFreeBytes, unsigned long long& totalBytes,
                       unsigned long long& freeBytes) = 0;
    /// Whether a file may be used in the mode of POSIX access().
    virtual int access(const char* path, int mode) = 0;
    /// Fills info; attrib takes the raw st_mode.
    virtual int stat(const char* path, FileInfo& info) = 0;
    /// Writes several pieces to a descriptor. Here: 0. @return bytes written
    virtual long writev(int fd, const io_vec* vec, int count);
    /// fseek() with a 64-bit offset. Here: -1.
    virtual int fseek64(void* fp, long long offset, int whence);
    /// ftell() with a 64-bit result. Here: -1.
    virtual long long ftell64(void* fp);
};

/// Hooks a file system below a prefix, or unhooks the first row of that prefix if fs is null. The library
/// takes no ownership: the object must outlive the hook and every file opened through it.
///
/// A path belongs to the first row, in the order of the table, whose prefix is a leading part of it, compared
/// as text: "/mnt/a" serves "/mnt/abc" too. There is room for 31 hooks of up to 255 characters; one more
/// is dropped silently, as is the unhooking of an unknown prefix. Any thread, but hooks are meant to be
/// installed before their paths are used.
FUNDO_API void hookFileSystem(const char* prefix, IFileSystem* fs);

/// The file system that serves a path: a hooked one, or the default. Never null.
FUNDO_API IFileSystem* _findOpts(const char* path);

}  // namespace Tovra::Fundo

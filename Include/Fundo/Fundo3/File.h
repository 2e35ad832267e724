#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/FileSystem.h"

namespace Tovra::Fundo {

/// One open file of up to 4 GiB, and operations on paths. CLfsFile serves larger files.
///
/// Position and length are cached: a file that another writer makes grow keeps its old length once it is
/// known. An object serves one thread at a time. It can be opened again after close(), and open() on an open
/// object closes it first. Operations without an open file do nothing and answer as each one says.
class FUNDO_API CFile {
public:
    /// Where a seek starts.
    enum SeekPosition {
        begin = 0,    ///< the start of the file
        current = 1,  ///< the position
        end = 2       ///< the end of the file
    };

    /// How the stream is buffered, see setvbuf().
    enum IOMode {
        ioFullBuffered = _IOFBF,  ///< written when the buffer is full
        ioLineBuffered = _IOLBF,  ///< written at the end of a line
        ioUnbuffered = _IONBF     ///< written at once
    };

    /// Flags of open(): one of the first three, with any of the others.
    enum OpenFlags : uint32_t {
        modeRead = 0,             ///< read
        modeWrite = 1,            ///< write
        modeReadWrite = 2,        ///< read and write
        modeCloseOnExec = 0x80,   ///< the descriptor does not survive an exec
        modeCreate = 0x1000,      ///< create or truncate
        modeNoTruncate = 0x2000,  ///< keep the content
        modeDirect = 0x10000      ///< ask the file system for direct access
    };

    CFile();
    virtual ~CFile();
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    /// Opens a file through the file system that serves its path.
    ///
    ///   access     modeCreate  modeNoTruncate  mode of the C library
    ///   read       any         any             "rb"
    ///   write      any         no              "wb"
    ///   write      any         yes             "ab"
    ///   readwrite  no          any             "rb+"
    ///   readwrite  yes         no              "wb+"
    ///   readwrite  yes         yes             "ab+"
    ///
    /// @return false if the flags name no access (logged) or the file system refused
    virtual bool open(const char* path, uint32_t dwFlags);

    /// Closes the file and frees what load() gave.
    virtual void close();

    /// Reads a whole file into memory and keeps it open. While something is loaded, gives that again and
    /// ignores the path.
    /// @return the bytes, owned by this object until close(); null if the file is empty (it stays open then),
    /// cannot be opened or is read short (logged)
    virtual uint8_t* load(const char* path);

    /// Closes the file and frees what load() gave.
    virtual void unload();

    /// Reads up to count bytes. @return bytes read; -1 without a file
    virtual long read(void* buffer, size_t count);

    /// Writes count bytes; a short write is logged. @return bytes written; -1 without a file
    virtual long write(void* buffer, size_t count);

    /// Brings what was written to the file system, which for the default one means to the disk.
    virtual void flush();

    /// Moves the position. A move to where it already is keeps the stream's buffer.
    /// @return the new position; 0 without a file or on failure
    virtual long seek(long offset, SeekPosition whence);

    /// The position in bytes; 0 without a file.
    virtual long getPosition();

    /// The length in bytes; 0 without a file.
    virtual long getLength();

    /// Reads a line of at most size - 1 characters. @return buffer, or null
    virtual char* gets(char* buffer, size_t size);

    /// Writes a text. @return what the file system gave, -1 for failure; 0 without a file
    virtual int puts(const char* text);

    /// Whether a file is open.
    virtual bool isOpen();

    /// Hands a vector write to the file system with the stream's descriptor: the file system's handles must
    /// be streams of the C library.
    /// @return bytes written; -1 without a file. Any other result than 0 moves the
    /// position, so the -1 of a file system without vector writes lowers it by one
    virtual long writev(const io_vec* vec, int count);

    /// Sets the buffering of the C library's stream; for files of the default file system.
    /// @return false, with a warning, without a file or if the library refused
    virtual bool setvbuf(char* buffer, IOMode mode, size_t size);

    virtual int resv1();  ///< Reserved; gives 0.
    virtual int resv2();  ///< Reserved; gives 0.
    virtual int resv3();  ///< Reserved; gives 0.
    virtual int resv4();  ///< Reserved; gives 0.

    /// Renames a file within the file system of oldPath.
    static bool rename(const char* oldPath, const char* newPath);
    /// Removes a file.
    static bool remove(const char* path);
    /// Makes a directory. @return false also if it exists
    static bool makeDirectory(const char* path);
    /// Removes an empty directory.
    static bool removeDirectory(const char* path);
    /// Tells the space of the file system that holds path, in bytes.
    static bool statFS(const char* path, unsigned long long& userFreeBytes, unsigned long long& totalBytes,
                       unsigned long long& freeBytes);
    /// Whether a file may be used in the mode of POSIX access().
    static bool access(const char* path, int mode);
    /// Fills info; attrib takes the raw st_mode.
    static bool stat(const char* path, FileInfo& info);

    /// Makes a directory and those above it. @return false if the last one exists or cannot be made; a null
    /// or empty path is logged
    static bool makeDirectoryRecursively(const char* path);
    /// Removes what a directory holds, and the directory itself if removeSelf is set. A symbolic link is
    /// removed, never followed.
    /// @return false for a null, empty or unknown path (logged), or if removing the directory itself failed
    static bool removeDirectoryRecursively(const char* path, bool removeSelf);

private:
    struct FileInternal;
    FileInternal* m_internal;
};

}  // namespace Tovra::Fundo

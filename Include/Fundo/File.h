#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/File.h"

/// Tovra::Fundo::CFile under its old names: each operation forwards to the one of that name, with its
/// results, rules and log lines. An object serves one thread at a time.
class FUNDO_API CFile {
public:
    /// Where Seek() starts.
    enum SeekPosition : unsigned int {
        begin = Tovra::Fundo::CFile::begin,      ///< the start of the file
        current = Tovra::Fundo::CFile::current,  ///< the position
        end = Tovra::Fundo::CFile::end           ///< the end of the file
    };

    /// Flags of Open().
    enum OpenFlags : unsigned int {
        modeRead = Tovra::Fundo::CFile::modeRead,                ///< read
        modeWrite = Tovra::Fundo::CFile::modeWrite,              ///< write
        modeReadWrite = Tovra::Fundo::CFile::modeReadWrite,      ///< read and write
        modeCloseOnExec = Tovra::Fundo::CFile::modeCloseOnExec,  ///< the descriptor does not survive an exec
        modeCreate = Tovra::Fundo::CFile::modeCreate,            ///< create or truncate
        modeNoTruncate = Tovra::Fundo::CFile::modeNoTruncate,    ///< keep the content
        modeDirect = Tovra::Fundo::CFile::modeDirect             ///< ask for direct access
    };

    CFile();
    /// Closes the file and frees what Load() gave.
    virtual ~CFile();
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    /// Opens a file. @return false if the flags name no access (logged) or the file system refused
    virtual bool Open(const char* path, unsigned int flags);
    /// Closes the file and frees what Load() gave.
    virtual void Close();
    /// Reads up to count bytes. @return bytes read; -1 without a file
    virtual long Read(void* buffer, unsigned int count);
    /// Writes count bytes. @return bytes written; -1 without a file
    virtual long Write(void* buffer, unsigned int count);
    /// Brings what was written to the file system.
    virtual void Flush();
    /// Moves the position. @param whence a SeekPosition; another one fails
    /// @return the new position; 0 without a file or on failure
    virtual long Seek(long offset, unsigned int whence);
    /// The position in bytes; 0 without a file.
    virtual long GetPosition();
    /// The length in bytes; 0 without a file.
    virtual long GetLength();
    /// Reads a line of at most size - 1 characters. @return buffer, or null
    virtual char* Gets(char* buffer, int size);
    /// Writes a text. @return -1 for failure; 0 without a file
    virtual int Puts(const char* text);
    /// Whether a file is open.
    virtual bool IsOpened();

    /// Reads a whole file into memory and keeps it open.
    /// @return the bytes, owned by this object until Close() or UnLoad(); null if there are none
    unsigned char* Load(const char* path);
    /// Closes the file and frees what Load() gave.
    void UnLoad();

    /// Renames a file.
    static bool Rename(const char* oldPath, const char* newPath);
    /// Removes a file.
    static bool Remove(const char* path);
    /// Makes a directory. @return false also if it exists
    static bool MakeDirectory(const char* path);
    /// Removes an empty directory.
    static bool RemoveDirectory(const char* path);
    /// Tells the space of the file system that holds path, in bytes.
    static bool StatFS(const char* path, unsigned long long& userFreeBytes, unsigned long long& totalBytes,
                       unsigned long long& freeBytes);
    /// Whether a file may be used in the mode of POSIX access().
    static bool Access(const char* path, int mode);
    /// Fills info; attrib takes the raw st_mode.
    static bool Stat(const char* path, Tovra::Fundo::FileInfo& info);

private:
    Tovra::Fundo::CFile* m_internal;
};

#pragma once

#include <string>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/String.h"

namespace Tovra::Fundo {

class CFileFindImpl;

/// A directory listing through the file system that serves its path.
///
/// There is no matching of names: a pattern is a directory followed by "/" or "/*", and every entry is
/// listed, "." and ".." too, in the order of the file system. A dangling link ends the listing at that entry,
/// with a warning. Names of 237 characters and more are passed over, joined paths are cut at 258. An object
/// serves one thread at a time.
class FUNDO_API CFileFind {
public:
    CFileFind();
    virtual ~CFileFind();
    CFileFind(const CFileFind&) = delete;
    CFileFind& operator=(const CFileFind&) = delete;

    /// Begins a listing, ending one under way, and stands on its first entry.
    /// @return false if there is no such directory
    virtual bool findFile(const char* pattern);
    /// Goes to the next entry; only after a findFile() that succeeded. @return false at the end
    virtual bool findNextFile();
    /// Ends the listing.
    virtual void close();
    /// Bytes of the current entry.
    virtual long long getLength();
    /// Name of the current entry.
    virtual std::string getFileName();
    /// Directory part of the pattern, followed by the name.
    virtual std::string getFilePath();
    /// Whether the owner may not write.
    virtual bool isReadOnly();
    /// Whether the entry is a directory.
    virtual bool isDirectory();
    /// Whether the file system marks the entry as hidden; the default one never does.
    virtual bool isHidden();
    /// Whether the entry has no attribute: a writable file.
    virtual bool isNormal();

private:
    CFileFindImpl* m_internal;
};

/// CFileFind with CString texts and no virtual operations.
class FUNDO_API CFileFindEx {
public:
    CFileFindEx();
    ~CFileFindEx();
    CFileFindEx(const CFileFindEx&) = delete;
    CFileFindEx& operator=(const CFileFindEx&) = delete;

    bool findFile(const char* pattern);  ///< See CFileFind::findFile().
    bool findNextFile();                 ///< See CFileFind::findNextFile().
    void close();                        ///< Ends the listing.
    long long getLength();               ///< Bytes of the current entry.
    CString getFileName();               ///< Name of the current entry.
    CString getFilePath();               ///< Directory part of the pattern, followed by the name.
    bool isReadOnly();                   ///< Whether the owner may not write.
    bool isDirectory();                  ///< Whether the entry is a directory.
    bool isHidden();                     ///< Whether the file system marks the entry as hidden.
    bool isNormal();                     ///< Whether the entry has no attribute: a writable file.

private:
    CFileFindImpl* m_internal;
};

}  // namespace Tovra::Fundo

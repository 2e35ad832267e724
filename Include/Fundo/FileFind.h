#pragma once

#include <string>

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo {
class CFileFind;
}

/// Tovra::Fundo::CFileFind for old code: a directory listing, with the same rules. An object serves one
/// thread at a time.
class FUNDO_API CFileFind {
public:
    CFileFind();
    virtual ~CFileFind();
    CFileFind(const CFileFind&) = delete;
    CFileFind& operator=(const CFileFind&) = delete;

    /// Begins a listing of a directory, followed by "/" or "/*", and stands on its first entry.
    /// @return false if there is no such directory
    virtual bool findFile(const char* pattern);
    /// Goes to the next entry; only after a findFile() that succeeded. @return false at the end
    virtual bool findNextFile();
    /// Ends the listing.
    virtual void close();

    long long getLength();      ///< Bytes of the current entry.
    std::string getFileName();  ///< Name of the current entry.
    std::string getFilePath();  ///< Directory part of the pattern, followed by the name.
    bool isReadOnly();          ///< Whether the owner may not write.
    bool isDirectory();         ///< Whether the entry is a directory.
    bool isHidden();            ///< Whether the file system marks the entry as hidden.
    bool isNormal();            ///< Whether the entry has no attribute: a writable file.

private:
    Tovra::Fundo::CFileFind* m_internal;
};

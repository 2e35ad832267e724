#pragma once

#include "Fundo/Fundo3/FileSystem.h"
#include "Fundo/Fundo3/String.h"
#include "Fundo3/File/DefaultFileSystem.h"

namespace Tovra::Fundo {

// The listing behind CFileFind and CFileFindEx.
class CFileFindImpl {
public:
    CFileFindImpl() = default;
    ~CFileFindImpl() { close(); }
    CFileFindImpl(const CFileFindImpl&) = delete;
    CFileFindImpl& operator=(const CFileFindImpl&) = delete;

    bool findFile(const char* pattern);
    bool findNextFile();
    void close();

    const FileInfo& info() const { return m_info; }
    bool has(int attribute) const { return (m_info.attrib & attribute) != 0; }

    template <class String>
    String filePath() const {
        String path(m_path.c_str());
        path += m_info.name;
        return path;
    }

private:
    static constexpr long kNone = -1;

    void nameDirectory();

    long m_handle = kNone;
    FileInfo m_info = {};
    IFileSystem* m_opt = FileDefaultOpt::instance();
    CString m_path;  // directory part of the pattern with its last "/"
};

}  // namespace Tovra::Fundo

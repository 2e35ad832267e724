#include "Fundo/Fundo3/FileFind.h"

#include <cstring>

#include "Fundo3/File/FileFindImpl.h"

namespace Tovra::Fundo {

bool CFileFindImpl::findFile(const char* pattern) {
    close();
    if (pattern == nullptr) return false;
    const char* slash = std::strrchr(pattern, '/');
    // Contract: a bare name leaves its first character as the directory.
    const size_t length = slash != nullptr ? static_cast<size_t>(slash - pattern) + 1 : pattern[0] != '\0';
    m_path.assign(pattern, length);
    m_opt = _findOpts(pattern);
    nameDirectory();
    m_handle = m_opt->findfirst(pattern, m_info);
    return m_handle != kNone;
}

bool CFileFindImpl::findNextFile() {
    nameDirectory();
    return m_opt->findnext(m_handle, m_info) != -1;
}

void CFileFindImpl::close() {
    if (m_handle == kNone) return;
    m_opt->findclose(m_handle);
    m_handle = kNone;
}

// findnext() takes the directory from the record it fills.
void CFileFindImpl::nameDirectory() {
    std::memset(m_info.name, 0, sizeof m_info.name);
    std::strncpy(m_info.name, m_path.c_str(), sizeof m_info.name - 1);
}

#define FIND_CLASS CFileFind
#define FIND_STRING std::string
#include "Fundo3/File/FindFace.inc"
#undef FIND_CLASS
#undef FIND_STRING

#define FIND_CLASS CFileFindEx
#define FIND_STRING CString
#include "Fundo3/File/FindFace.inc"

}  // namespace Tovra::Fundo

#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

// A directory of the test's own, removed with all it holds.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "fundo-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp");
        m_path = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    // The directory, or the path of an entry in it.
    std::string path(const std::string& entry = "") const {
        return entry.empty() ? m_path.string() : (m_path / entry).string();
    }

private:
    std::filesystem::path m_path;
};

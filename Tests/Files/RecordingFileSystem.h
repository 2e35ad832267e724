#pragma once

#include <string>
#include <vector>

#include "MemoryFileSystem.h"

// The file system in memory, which notes the modes and seeks it is asked for and can be told to fail.
class RecordingFileSystem : public MemoryFileSystem {
public:
    void* fopen(const char* path, const char* mode) override {
        modes.emplace_back(mode);
        // The files of a test need not exist to be opened for reading.
        return MemoryFileSystem::fopen(path, mode[0] == 'r' ? "a" : mode);
    }
    int fseek(void* fp, long offset, int whence) override {
        ++seeks;
        return failSeeks ? -1 : MemoryFileSystem::fseek(fp, offset, whence);
    }
    size_t fwrite(const void* buf, size_t size, size_t count, void* fp) override {
        return MemoryFileSystem::fwrite(buf, size, count < mostWritten ? count : mostWritten, fp);
    }

    std::vector<std::string> modes;
    int seeks = 0;
    bool failSeeks = false;
    size_t mostWritten = static_cast<size_t>(-1);
};

// Hooks a file system for the life of a test.
class ScopedHook {
public:
    ScopedHook(const char* prefix, Tovra::Fundo::IFileSystem* fs) : m_prefix(prefix) {
        Tovra::Fundo::hookFileSystem(prefix, fs);
    }
    ~ScopedHook() { Tovra::Fundo::hookFileSystem(m_prefix.c_str(), nullptr); }

private:
    std::string m_prefix;
};

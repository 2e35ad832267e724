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

    std::vector<std::string> modes;
    int seeks = 0;
    bool failSeeks = false;
};

#pragma once

namespace Tovra::Fundo::Platform {

// The space of the file system that holds a path, in bytes.
struct DiskSpace {
    unsigned long long userFree;  // what an ordinary user may still take
    unsigned long long total;
    unsigned long long free;
};

// @return 0, or what the system's call gave, with errno set and space untouched
int diskSpace(const char* path, DiskSpace& space);

}  // namespace Tovra::Fundo::Platform

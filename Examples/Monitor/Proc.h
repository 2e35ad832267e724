#pragma once

#include <cstdint>

// What the monitor reads from /proc. A file that cannot be read leaves zeros.

struct CpuSample {
    uint64_t busy = 0;   // clock ticks since boot, all cores
    uint64_t total = 0;  // the same with idle time
};

struct MemorySample {
    uint64_t totalKb = 0;
    uint64_t availableKb = 0;
};

struct SelfSample {
    uint64_t residentKb = 0;
    uint64_t threads = 0;
};

CpuSample readCpu();
MemorySample readMemory();
SelfSample readSelf();

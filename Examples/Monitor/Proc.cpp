#include "Proc.h"

#include <fstream>
#include <string>

namespace {

// The number behind "key:" in a file of such lines; 0 if there is none.
uint64_t valueOf(const char* path, const std::string& key) {
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        if (line.compare(0, key.size(), key) == 0) return std::stoull(line.substr(key.size()));
    }
    return 0;
}

}  // namespace

CpuSample readCpu() {
    std::ifstream file("/proc/stat");
    std::string label;
    file >> label;
    CpuSample sample;
    uint64_t ticks = 0;
    // user nice system idle iowait irq softirq steal
    for (int field = 0; field < 8 && file >> ticks; ++field) {
        sample.total += ticks;
        const bool idle = field == 3 || field == 4;
        if (!idle) sample.busy += ticks;
    }
    return sample;
}

MemorySample readMemory() {
    return {valueOf("/proc/meminfo", "MemTotal:"), valueOf("/proc/meminfo", "MemAvailable:")};
}

SelfSample readSelf() {
    return {valueOf("/proc/self/status", "VmRSS:"), valueOf("/proc/self/status", "Threads:")};
}

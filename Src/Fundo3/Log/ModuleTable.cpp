#include "Fundo3/Log/ModuleTable.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <string>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"

namespace Tovra::Fundo {

namespace {

enum Switch { kAllOff = 0, kByModule = 1 };

// Usable to the very end, like the rest of the print path.
struct Modules {
    CMutex tableMutex;
    std::map<std::string, bool, std::less<>> table;  // s_logmoduleinfo
    CMutex statisticsMutex;
    std::map<std::string, LogModuleInfo, std::less<>> statistics;  // s_logmoduleinfoobject
};

std::atomic<bool> s_logmodulecheck{false};       // the table has been written to; never cleared
std::atomic<bool> s_logModuleStatistics{false};  // counting is on

Modules& modules() {
    static Detail::Immortal<Modules> s_modules;
    return *s_modules;
}

}  // namespace

namespace Detail {

bool isModuleOpen(const char* libName) {
    const int open = __atomic_load_n(&Fundo_openLog, __ATOMIC_RELAXED);
    if (open == kAllOff) return false;
    if (open != kByModule || libName == nullptr) return true;
    if (!s_logmodulecheck.load(std::memory_order_acquire)) return true;
    Modules& known = modules();
    const MutexGuard<CMutex> guard(known.tableMutex);
    const auto found = known.table.find(libName);
    return found == known.table.end() || found->second;
}

void setModule(const char* libName, bool on) {
    Modules& known = modules();
    const MutexGuard<CMutex> guard(known.tableMutex);
    known.table.insert_or_assign(libName, on);
    s_logmodulecheck.store(true, std::memory_order_release);
    __atomic_store_n(&Fundo_openLog, kByModule, __ATOMIC_RELAXED);
}

void countLogged(const char* libName, int size) {
    if (!s_logModuleStatistics.load(std::memory_order_relaxed)) return;
    if (libName == nullptr || libName[0] == '\0') return;
    Modules& known = modules();
    const MutexGuard<CMutex> guard(known.statisticsMutex);
    auto entry = known.statistics.find(libName);
    if (entry == known.statistics.end()) entry = known.statistics.emplace(libName, LogModuleInfo{}).first;
    const auto bytes = static_cast<uint64_t>(size);
    uint64_t& sum = entry->second.logSize;
    sum = sum > UINT64_MAX - bytes ? UINT64_MAX : sum + bytes;
}

void setCounting(bool on) { s_logModuleStatistics.store(on, std::memory_order_relaxed); }

}  // namespace Detail

std::map<std::string, LogModuleInfo> getLogStatistics() {
    Modules& known = modules();
    const Detail::MutexGuard<CMutex> guard(known.statisticsMutex);
    return {known.statistics.begin(), known.statistics.end()};
}

}  // namespace Tovra::Fundo

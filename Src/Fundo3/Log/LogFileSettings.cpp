#include "Fundo3/Log/LogFileSettings.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Log/LogFile.h"
#include "Fundo3/MutexGuard.h"

namespace Tovra::Fundo::Detail {

static constexpr char kSource[] = "Src/Fundo3/PrintLog";

std::atomic<int> s_logsize{0};
std::atomic<int> s_logFileMaxNumber{0};
std::atomic<bool> s_saveLogInOldWay{false};
std::atomic<bool> s_saveLogByDay{false};

namespace {

struct SharedPath {
    CMutex mutex;
    LogPath path;
};

std::atomic<unsigned> s_version{0};
std::atomic<bool> s_hasPath{false};

SharedPath& sharedPath() {
    static Immortal<SharedPath> s_path;
    return *s_path;
}

// Where archives are looked for: the folder of the path.
LogPath describe(const char* path) {
    const char* slash = std::strrchr(path, '/');
    // Contract: a bare name is searched for in "./", without the "*" of the other case.
    if (slash == nullptr) return {std::string("./") + path, "./"};
    return {path, std::string(path, static_cast<size_t>(slash - path) + 1) + "*"};
}

bool namesFolder(const char* path) {
    const char last = path[std::strlen(path) - 1];
    return last == '/' || last == '\\';
}

// Without a path the search pattern stays as it was.
void publish(const LogPath& path) {
    SharedPath& state = sharedPath();
    const MutexGuard<CMutex> guard(state.mutex);
    state.path.file = path.file;
    if (!path.file.empty()) state.path.search = path.search;
    s_hasPath.store(!path.file.empty(), std::memory_order_relaxed);
    s_version.fetch_add(1, std::memory_order_release);
}

}  // namespace

bool hasLogPath() { return s_hasPath.load(std::memory_order_relaxed); }

void refreshLogPath(LogPath& known, unsigned& seen) {
    if (s_version.load(std::memory_order_acquire) == seen) return;
    SharedPath& state = sharedPath();
    const MutexGuard<CMutex> guard(state.mutex);
    known = state.path;
    seen = s_version.load(std::memory_order_relaxed);
}

void LogFileSettings::setPath(const char* path) {
    if (path[0] == '\0') {
        publish({});
    } else if (namesFolder(path)) {
        std::printf("[%s:%d]logDir is invalid\n", kSource, __LINE__);
        publish({});
    } else {
        publish(describe(path));
    }
}

void LogFileSettings::setSizeLimit(const char* kilobytes) {
    const auto bytes = static_cast<int>(static_cast<unsigned>(std::atoi(kilobytes)) << 10);
    s_logsize.store(bytes < 0 ? 0 : bytes, std::memory_order_relaxed);
}

void LogFileSettings::setMaxFiles(const char* number) {
    const int files = std::atoi(number);
    s_logFileMaxNumber.store(files < 0 ? 0 : files, std::memory_order_relaxed);
}

void LogFileSettings::setRolling(bool rolling) {
    s_saveLogInOldWay.store(rolling, std::memory_order_relaxed);
}

void LogFileSettings::setByDay(bool byDay) { s_saveLogByDay.store(byDay, std::memory_order_relaxed); }

}  // namespace Tovra::Fundo::Detail

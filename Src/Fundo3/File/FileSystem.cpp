#include "Fundo/Fundo3/FileSystem.h"

#include <atomic>
#include <cstring>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/File/DefaultFileSystem.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"

// The table of hooks. A path is looked up at every open and every path operation, so a process without hooks
// pays one load; with hooks, a lock around a few comparisons.

namespace Tovra::Fundo {

namespace {

struct Hook {
    char prefix[256];  // a row is free when this is empty
    IFileSystem* fs;
};

constexpr int kFirstRow = 1;  // Contract: row 0 is never used, so 31 file systems can be hooked.
constexpr int kRows = 32;

Hook fsOpts[kRows];
std::atomic<int> s_hooked{0};

CMutex& tableMutex() {
    static Detail::Immortal<CMutex> s_mutex;
    return *s_mutex;
}

Hook* findRow(bool (*matches)(const Hook&, const char*), const char* text) {
    for (int row = kFirstRow; row < kRows; ++row) {
        if (matches(fsOpts[row], text)) return &fsOpts[row];
    }
    return nullptr;
}

bool isFree(const Hook& hook, const char*) { return hook.prefix[0] == '\0'; }

bool isOf(const Hook& hook, const char* prefix) {
    return hook.prefix[0] != '\0' && std::strncmp(hook.prefix, prefix, sizeof hook.prefix) == 0;
}

bool serves(const Hook& hook, const char* path) {
    return hook.prefix[0] != '\0' && std::strncmp(hook.prefix, path, std::strlen(hook.prefix)) == 0;
}

void add(const char* prefix, IFileSystem* fs) {
    Hook* row = findRow(isFree, nullptr);
    if (row == nullptr || prefix[0] == '\0') return;
    std::strncpy(row->prefix, prefix, sizeof row->prefix - 1);
    row->fs = fs;
    s_hooked.fetch_add(1, std::memory_order_relaxed);
}

void remove(const char* prefix) {
    Hook* row = findRow(isOf, prefix);
    if (row == nullptr) return;
    *row = {};
    s_hooked.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace

IFileSystem::~IFileSystem() = default;

long IFileSystem::writev(int, const io_vec*, int) { return 0; }

int IFileSystem::fseek64(void*, long long, int) { return -1; }

long long IFileSystem::ftell64(void*) { return -1; }

void hookFileSystem(const char* prefix, IFileSystem* fs) {
    if (prefix == nullptr) return;
    const Detail::MutexGuard<CMutex> guard(tableMutex());
    if (fs != nullptr) {
        add(prefix, fs);
    } else {
        remove(prefix);
    }
}

IFileSystem* _findOpts(const char* path) {
    if (path == nullptr || s_hooked.load(std::memory_order_relaxed) == 0) return FileDefaultOpt::instance();
    const Detail::MutexGuard<CMutex> guard(tableMutex());
    const Hook* row = findRow(serves, path);
    return row != nullptr ? row->fs : FileDefaultOpt::instance();
}

}  // namespace Tovra::Fundo

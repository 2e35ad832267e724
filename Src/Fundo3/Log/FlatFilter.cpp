#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "Fundo3/Report.h"
#include "MiniFundo/PrintLog.h"
#include "Platform/ThreadId.h"

// The flat layer's own path, a line to standard output and nowhere else, and its helpers.

namespace {

constexpr int kBufferSize = 8192;
constexpr int kRoom = kBufferSize - 1;

const char* baseName(const char* file) {
    if (file == nullptr) return nullptr;
    const int offset = Fundo_reverseEqualOrder(const_cast<char*>(file));
    return offset > 0 ? file + offset : file;
}

}  // namespace

int Fundo_reverseEqualOrder(char* path) {
    const char* slash = std::strrchr(path, '/');
    if (slash == nullptr || slash[1] == '\0') return -1;
    return static_cast<int>(slash + 1 - path);
}

int Fundo_logFilter(int level, const char* libName, const char* file, const char* function, int line,
                    const char* version, const char* fmt, ...) {
    if (!Tovra::Fundo::Detail::isLevelOpen(level)) return 0;
    if (__atomic_load_n(&Fundo_openLog, __ATOMIC_RELAXED) == 0) return 0;
    char buffer[kBufferSize];
    buffer[0] = '\0';
    const int prefix = Fundo_logOptionControl(buffer, kRoom, level, libName, baseName(file), function, line,
                                              version, nullptr);
    va_list arguments;
    va_start(arguments, fmt);
    const int wanted = std::vsnprintf(buffer + prefix, static_cast<size_t>(kRoom - prefix), fmt, arguments);
    va_end(arguments);
    const int total = prefix + std::max(wanted, 0);
    const bool ended = total > kRoom || (total > 0 && buffer[total - 1] == '\n');
    __atomic_store_n(&Fundo_returned, ended ? 1 : 0, __ATOMIC_RELAXED);
    std::fputs(buffer, stdout);
    Fundo_resetcolor();
    return total;
}

unsigned Fundo_getCurrentThreadID() {
    return static_cast<unsigned>(Tovra::Fundo::Platform::currentThreadId());
}

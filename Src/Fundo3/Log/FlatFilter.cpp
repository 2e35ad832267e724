#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "Fundo3/Log/Line.h"
#include "MiniFundo/PrintLog.h"
#include "Platform/ThreadId.h"

// The flat layer's own path, a line to standard output and nowhere else, and its helpers.

namespace {

using namespace Tovra::Fundo::Detail;

const char* baseName(const char* file) {
    if (file == nullptr) return nullptr;
    const int offset = Fundo_reverseEqualOrder(const_cast<char*>(file));
    return offset > 0 ? file + offset : file;
}

// Owns the buffer, which the frame of the gate must not.
__attribute__((noinline)) int putLine(const LineLabel& label, const char* format, va_list arguments) {
    char buffer[kLineSize];
    const int wanted = composeLine(buffer, label, nullptr, format, arguments);
    if (wanted == -1) return 0;
    std::fputs(buffer, stdout);
    Fundo_resetcolor();
    return wanted;
}

}  // namespace

int Fundo_reverseEqualOrder(char* path) {
    const char* slash = std::strrchr(path, '/');
    if (slash == nullptr || slash[1] == '\0') return -1;
    return static_cast<int>(slash + 1 - path);
}

int Fundo_logFilter(int level, const char* libName, const char* file, const char* function, int line,
                    const char* version, const char* fmt, ...) {
    if (!isLevelOpen(level)) return 0;
    if (__atomic_load_n(&Fundo_openLog, __ATOMIC_RELAXED) == 0) return 0;
    va_list arguments;
    va_start(arguments, fmt);
    const int wanted = putLine({level, libName, baseName(file), function, line, version, ""}, fmt, arguments);
    va_end(arguments);
    return wanted;
}

unsigned Fundo_getCurrentThreadID() {
    return static_cast<unsigned>(Tovra::Fundo::Platform::currentThreadId());
}

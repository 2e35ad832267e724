// The gates come first here, not in the header's way: what this file defines is what they call.
#define FUNDO_NO_INLINE_GATE

#include <cstdarg>

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/PrintLog.h"
#include "Fundo3/Log/Line.h"
#include "Fundo3/Log/LogFile.h"

// Where lines come in. The namespace and the global family differ in nothing but their place.

namespace {

using namespace Tovra::Fundo::Detail;

LineLabel plainLabel(int level, const char* libName) { return {level, libName, "", "", -1, "", ""}; }

}  // namespace

// The gate stands outside the frame that owns the line's buffer.
#define FUNDO_PRINT_BEHIND_GATE(level, libName)                              \
    if (!isLevelOpen(level)) return 0;                                       \
    va_list arguments;                                                       \
    va_start(arguments, fmt);                                                \
    const int total = printLine(plainLabel(level, libName), fmt, arguments); \
    va_end(arguments);                                                       \
    return total

#define FUNDO_DEFINE_LEVEL(name, level) \
    int name(const char* fmt, ...) { FUNDO_PRINT_BEHIND_GATE(level, "libFundo"); }

#define FUNDO_DEFINE_FAMILY                                                \
    FUNDO_DEFINE_LEVEL(logFatal, kFatal)                                   \
    FUNDO_DEFINE_LEVEL(logError, kError)                                   \
    FUNDO_DEFINE_LEVEL(logWarn, kWarn)                                     \
    FUNDO_DEFINE_LEVEL(logInfo, kInfo)                                     \
    FUNDO_DEFINE_LEVEL(logTrace, kTrace)                                   \
    FUNDO_DEFINE_LEVEL(logDebug, kDebug)                                   \
    int logLibName(int level, const char* libName, const char* fmt, ...) { \
        if (level < kFatal || level > kDebug) return 0;                    \
        FUNDO_PRINT_BEHIND_GATE(level, libName);                           \
    }

FUNDO_DEFINE_FAMILY

namespace Tovra::Fundo {

FUNDO_DEFINE_FAMILY

int logFilter(int level, const char* libName, const char* file, const char* function, int line,
              const char* version, const char* fmt, ...) {
    if (!isLevelOpen(level)) return 0;
    va_list arguments;
    va_start(arguments, fmt);
    const int total = filterList({level, libName, file, function, line, version, ""}, fmt, arguments);
    va_end(arguments);
    return total;
}

void logCleanup() { closeLogFile(); }

}  // namespace Tovra::Fundo

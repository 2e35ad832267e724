#include <cstdarg>

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/PrintLog.h"
#include "Fundo3/Log/Line.h"
#include "Fundo3/Log/LogFile.h"

// Where lines come in. The namespace and the global family differ in nothing but their place.

using Tovra::Fundo::Detail::kDebug;
using Tovra::Fundo::Detail::kFatal;
using Tovra::Fundo::Detail::logList;

// The gate stands here, outside the frame that owns the line's buffer.
#define FUNDO_DEFINE_LEVEL(name, level)                               \
    int name(const char* fmt, ...) {                                  \
        if (!Tovra::Fundo::Detail::isLevelOpen(level)) return 0;      \
        va_list arguments;                                            \
        va_start(arguments, fmt);                                     \
        const int total = logList(level, "libFundo", fmt, arguments); \
        va_end(arguments);                                            \
        return total;                                                 \
    }

#define FUNDO_DEFINE_FAMILY                                                \
    FUNDO_DEFINE_LEVEL(logFatal, Tovra::Fundo::Detail::kFatal)             \
    FUNDO_DEFINE_LEVEL(logError, Tovra::Fundo::Detail::kError)             \
    FUNDO_DEFINE_LEVEL(logWarn, Tovra::Fundo::Detail::kWarn)               \
    FUNDO_DEFINE_LEVEL(logInfo, Tovra::Fundo::Detail::kInfo)               \
    FUNDO_DEFINE_LEVEL(logTrace, Tovra::Fundo::Detail::kTrace)             \
    FUNDO_DEFINE_LEVEL(logDebug, Tovra::Fundo::Detail::kDebug)             \
    int logLibName(int level, const char* libName, const char* fmt, ...) { \
        if (level < kFatal || level > kDebug) return 0;                    \
        if (!Tovra::Fundo::Detail::isLevelOpen(level)) return 0;           \
        va_list arguments;                                                 \
        va_start(arguments, fmt);                                          \
        const int total = logList(level, libName, fmt, arguments);         \
        va_end(arguments);                                                 \
        return total;                                                      \
    }

FUNDO_DEFINE_FAMILY

namespace Tovra::Fundo {

FUNDO_DEFINE_FAMILY

int logFilter(int level, const char* libName, const char* file, const char* function, int line,
              const char* version, const char* fmt, ...) {
    if (!Detail::isLevelOpen(level)) return 0;
    va_list arguments;
    va_start(arguments, fmt);
    const int total = Detail::filterList({level, libName, file, function, line, version, ""}, fmt, arguments);
    va_end(arguments);
    return total;
}

void logCleanup() { Detail::closeLogFile(); }

}  // namespace Tovra::Fundo

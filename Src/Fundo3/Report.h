#pragma once

#include "Fundo/Fundo3/Error.h"
#include "MiniFundo/PrintLog.h"

// How the library's own code logs and asserts. Each source defines its path text once,
//
//     static constexpr char kSource[] = "Src/Fundo3/Mutex";
//
// and uses the macros below. A refused line costs the test of the gate, its arguments are not evaluated.

namespace Tovra::Fundo::Detail {

// Where a line comes from.
struct Site {
    const char* source;
    const char* function;
    int line;
};

enum Level : int { kFatal = 1, kError = 2, kWarn = 3, kInfo = 4, kTrace = 5, kDebug = 6 };

inline bool isLevelOpen(int level) {
    return __atomic_load_n(&Fundo_printLogLevel, __ATOMIC_RELAXED) >= level;
}

// Logs the text as it stands.
void report(int level, const Site& site, const char* format, ...) __attribute__((format(printf, 3, 4)));

// Logs behind "[source:line] this:object tid:id, ".
void reportObject(int level, const Site& site, const void* object, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

// The same as a plain line: no source fields, and the module switches do not count.
void reportPlainObject(int level, const Site& site, const void* object, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

// Logs behind "[source:line] tid:id, ".
void reportStatic(int level, const Site& site, const char* format, ...) __attribute__((format(printf, 3, 4)));

}  // namespace Tovra::Fundo::Detail

#define FUNDO_SITE (::Tovra::Fundo::Detail::Site{kSource, __FUNCTION__, __LINE__})

// Each is one statement: FUNDO_REPORT(Detail::kWarn, "format", arguments...).
#define FUNDO_REPORT_IF(level, call)                      \
    do {                                                  \
        if (::Tovra::Fundo::Detail::isLevelOpen(level)) { \
            call;                                         \
        }                                                 \
    } while (false)
#define FUNDO_REPORT(level, ...) \
    FUNDO_REPORT_IF(level, ::Tovra::Fundo::Detail::report(level, FUNDO_SITE, __VA_ARGS__))
#define FUNDO_REPORT_THIS(level, ...) \
    FUNDO_REPORT_IF(level, ::Tovra::Fundo::Detail::reportObject(level, FUNDO_SITE, this, __VA_ARGS__))
#define FUNDO_REPORT_PLAIN_THIS(level, ...) \
    FUNDO_REPORT_IF(level, ::Tovra::Fundo::Detail::reportPlainObject(level, FUNDO_SITE, this, __VA_ARGS__))
#define FUNDO_REPORT_STATIC(level, ...) \
    FUNDO_REPORT_IF(level, ::Tovra::Fundo::Detail::reportStatic(level, FUNDO_SITE, __VA_ARGS__))

// The function text is a literal because users search logs for it, and compilers spell signatures apart.
// The expression is stringified here, at the first level, so that NULL stays NULL.
#define FUNDO_ASSERT_IN(expression, function) \
    (static_cast<bool>(expression)            \
         ? static_cast<void>(0)               \
         : ::Tovra::Fundo::Detail::assertionFailed(#expression, function, kSource, __LINE__))

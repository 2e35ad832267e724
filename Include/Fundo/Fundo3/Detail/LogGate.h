#pragma once

#include "MiniFundo/PrintLog.h"

// FUNDO_INLINE_GATE(name, level) has callers of a level function test the gate themselves, so that a refused
// line costs no call: two loads and a compare. An open line goes on through logLibName() of the namespace
// where the macro stands, which prints the same. The function itself stays for everybody else: other
// compilers, builds without optimisation, pointers to it.
#if defined(__GNUC__) && !defined(__clang__) && defined(__OPTIMIZE__) && !defined(FUNDO_NO_INLINE_GATE)
#define FUNDO_INLINE_GATE(name, level)                                                                    \
    extern inline __attribute__((gnu_inline, always_inline, artificial)) int name(const char* fmt, ...) { \
        if (__atomic_load_n(&Fundo_printLogLevel, __ATOMIC_RELAXED) < (level)) return 0;                  \
        return logLibName((level), "libFundo", fmt, __builtin_va_arg_pack());                             \
    }                                                                                                     \
    static_assert(true, "takes the semicolon")
#else
#define FUNDO_INLINE_GATE(name, level) static_assert(true, "takes the semicolon")
#endif

// The gates of a family, behind its declarations. The callers' formats are checked by those; the gates' own
// is a parameter.
#define FUNDO_INLINE_GATES                                                                   \
    _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wformat-nonliteral\"") \
        FUNDO_INLINE_GATE(logFatal, 1);                                                      \
    FUNDO_INLINE_GATE(logError, 2);                                                          \
    FUNDO_INLINE_GATE(logWarn, 3);                                                           \
    FUNDO_INLINE_GATE(logInfo, 4);                                                           \
    FUNDO_INLINE_GATE(logTrace, 5);                                                          \
    FUNDO_INLINE_GATE(logDebug, 6);                                                          \
    _Pragma("GCC diagnostic pop") static_assert(true, "takes the semicolon")

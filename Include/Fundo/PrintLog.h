#pragma once

#include "Fundo/Fundo3/Detail/LogGate.h"
#include "Fundo/Fundo3/Export.h"

// The print log's plain entries in the global namespace, line for line those of Fundo/Fundo3/PrintLog.h.

/// Logs at level 1 under "libFundo". @return bytes composed; 0 if the level gate refused
FUNDO_API int logFatal(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
/// logFatal() at level 2.
FUNDO_API int logError(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
/// logFatal() at level 3.
FUNDO_API int logWarn(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
/// logFatal() at level 4.
FUNDO_API int logInfo(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
/// logFatal() at level 5.
FUNDO_API int logTrace(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
/// logFatal() at level 6.
FUNDO_API int logDebug(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

/// Logs at a level from 1 to 6 under a name of the caller's; another level gives 0.
FUNDO_API int logLibName(int level, const char* libName, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

/// @cond
FUNDO_INLINE_GATES;
/// @endcond

/// Tovra::Fundo::dumpHex().
FUNDO_API void DumpHex(unsigned char* data, unsigned long length);

/// Writes "[name] " with at most max bytes of the name and no terminator: out holds max + 3 bytes. A null
/// name counts as "". @return bytes written
FUNDO_API unsigned addLibName(const char* name, char* out, unsigned max);

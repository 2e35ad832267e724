#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Fundo/Fundo3/Detail/LogGate.h"
#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"
#include "MiniFundo/PrintLog.h"

/// @file
/// The print log. A line goes to the console or the printer, then to the attached procedures, then to the
/// log file, and is counted in the statistics. Any thread may log, at any time, static destructors and
/// exit handlers included. Levels: 0 nothing, 1 fatal, 2 error, 3 warn, 4 info, 5 trace, 6 debug.

namespace Tovra::Fundo {

/// Logs at level 1 under the name "libFundo". A line is cut at 8192 bytes. A text without a newline at its
/// end leaves the line open: the next call continues it without a prefix. A text that cannot be formatted
/// shows as its format. errno is left as it was.
/// @return bytes composed; 0 if the level gate refused
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

/// Logs at any level from 1 to 6 under a name of the caller's. Another level gives 0.
FUNDO_API int logLibName(int level, const char* libName, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

/// @cond
FUNDO_INLINE_GATES;
/// @endcond

/// Logs with source place and version, if level gate and module switches let it pass; applications use the
/// macros below.
/// @param file    cut to what follows its last "/"
/// @param version null counts as ""
/// @return bytes composed; 0 if refused
FUNDO_API int logFilter(int level, const char* libName, const char* file, const char* function, int line,
                        const char* version, const char* fmt, ...) __attribute__((format(printf, 7, 8)));

/// Sets the level gate, unchecked.
FUNDO_API void setPrintLogLevel(int level);

/// The level gate.
FUNDO_API int getPrintLogLevel();

/// Logs bytes at level 5, sixteen a row, with addresses and characters. A length of 0, or one that is
/// negative as a 32-bit number, prints nothing.
FUNDO_API void dumpHex(unsigned char* data, unsigned long length);

/// What a line carries. All false is the start: colour, time, library, level, thread id, version, function,
/// file and line are on.
struct PrintOptions {
    bool noTime;           ///< no time field
    bool noColor;          ///< no colour escapes
    bool noLibName;        ///< no library name field
    bool noLevel;          ///< no level word
    bool noThread;         ///< no thread id field
    bool noVersion;        ///< no version field
    bool noFunction;       ///< no function field
    bool noFile;           ///< no file field
    bool noLine;           ///< no line number field
    bool showDate;         ///< date field
    bool showMillisecond;  ///< the time carries milliseconds
    bool structuredForm;   ///< fields carry tags, such as "T:"
    bool noLogFile;        ///< lines are not handed to the log file
    char reserved[19];     ///< copied along, means nothing
};

/// Sets the options of the lines to come. Meant for a console: a line in flight may show old or new.
FUNDO_API void setPrintOptions(PrintOptions options);

/// The options as last set.
FUNDO_API void getPrintOptions(PrintOptions* out);

/// Steers the log while the process runs; applications hand the words of their console on. argv[0] is the
/// first option, not a program name. With argc 0, or "-h" alone, prints the usage. What does not fit is
/// ignored.
///
///   -loglevel N                          the level gate
///   -logmodule NAME on|off               one library; -logmodule on|off for all
///   -logtime, -logthread, -logversion, -logfunction on|off    fields of the line
///   -logpath FILE                        the log file; "" ends file logging
///   -logsize KIB                         empties the file at this size, unless it rolls
///   -logsavesetting bysize KIB MAX       rolls at this size, at most MAX files kept (0 no limit)
///   -logsavesetting byday on|off MAX     rolls when the date changes
///   -logsavesetting none                 one file, emptied at its size
///   -logmodulestatistics on|off          counts bytes for getLogStatistics()
///
/// Meant for a console: lines in flight use old or new settings. The guarantee of the file: a line whose call
/// has returned survives the process, not a power cut. One process for each log file. Archives are named
/// FILE_YYYY-MM-DD_N; every file whose name holds the live path counts for MAX and can be removed as the
/// oldest, FILE.bak too. A failure is told on standard output and costs at most its line.
FUNDO_API void setLogFilter(int argc, char** argv);

/// Bytes logged under one name.
struct LogModuleInfo {
    uint64_t logSize;   ///< sticks at the largest value
    uint64_t reserved;  ///< 0
};

/// A copy of the statistics, by library name. Any thread.
FUNDO_API std::map<std::string, LogModuleInfo> getLogStatistics();

/// Closes the log file; the next line opens it again. To rotate from outside: rename the file, then call
/// this.
FUNDO_API void logCleanup();

/// Replaces standard output for the text of lines; the colour escapes still go there. An empty delegate
/// gives the console back. The printer is called without a lock held.
FUNDO_API void setLogPrinter(TFunction1<void, const char*> printer);

/// Attaches a procedure that sees every line; its result is ignored. It is called without a lock held, may
/// attach and detach, and must guard itself against endless recursion if it logs. On return any write to
/// the log file that was under way has finished.
/// @return 1, or 0 if an equal one is attached
FUNDO_API int attachPrint(TFunction1<bool, const char*> proc);

/// Detaches a procedure; a line in flight may still call it. @return 1, or 0 if it was not attached
FUNDO_API int detachPrint(TFunction1<bool, const char*> proc);

}  // namespace Tovra::Fundo

/// The version text of the log macros; define it before the include to set it.
#ifndef FUNDO_LOG_VERSION
#define FUNDO_LOG_VERSION ""
#endif

/// Logs with the caller's source place through logFilter(). One statement; while the level gate refuses the
/// level, nothing behind it is evaluated and nothing is called.
#define FUNDO_LOG(level, libName, ...)                                                         \
    do {                                                                                       \
        const int fundoLogLevel_ = (level);                                                    \
        if (__atomic_load_n(&Fundo_printLogLevel, __ATOMIC_RELAXED) >= fundoLogLevel_) {       \
            ::Tovra::Fundo::logFilter(fundoLogLevel_, (libName), __FILE__, __func__, __LINE__, \
                                      FUNDO_LOG_VERSION, __VA_ARGS__);                         \
        }                                                                                      \
    } while (false)

/// FUNDO_LOG() at level 1.
#define FUNDO_LOG_FATAL(libName, ...) FUNDO_LOG(1, libName, __VA_ARGS__)
/// FUNDO_LOG() at level 2.
#define FUNDO_LOG_ERROR(libName, ...) FUNDO_LOG(2, libName, __VA_ARGS__)
/// FUNDO_LOG() at level 3.
#define FUNDO_LOG_WARN(libName, ...) FUNDO_LOG(3, libName, __VA_ARGS__)
/// FUNDO_LOG() at level 4.
#define FUNDO_LOG_INFO(libName, ...) FUNDO_LOG(4, libName, __VA_ARGS__)
/// FUNDO_LOG() at level 5.
#define FUNDO_LOG_TRACE(libName, ...) FUNDO_LOG(5, libName, __VA_ARGS__)
/// FUNDO_LOG() at level 6.
#define FUNDO_LOG_DEBUG(libName, ...) FUNDO_LOG(6, libName, __VA_ARGS__)

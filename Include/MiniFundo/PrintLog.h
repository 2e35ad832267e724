#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/SystemTime.h"

/// @file
/// The flat layer of the print log: plain functions and integers with C linkage. The classes of
/// Fundo/Fundo3/PrintLog.h build on it.

extern "C" {

/// The level gate: a message of level L is printed while this is L or above. 3 (warn) at the start.
/// Other threads read it while it changes: write it with setPrintLogLevel() or an atomic store.
extern FUNDO_API int Fundo_printLogLevel;

/// The module switch of the filtered entries: 0 all off, 1 by the module table, 2 all on (the start).
extern FUNDO_API int Fundo_openLog;

/// 1 if the last line ended, so that the next call opens a new one; 0 if the next call continues it.
extern FUNDO_API int Fundo_returned;

/// Writes text to standard output; the level is ignored. @return what fputs gave
FUNDO_API int Fundo_print(int level, const char* text);

/// Composes the prefix of a line into dst, and opens its colour on standard output. Composes nothing if a
/// line is open.
/// @param size    bytes of dst; the prefix is cut to size - 1
/// @param line    0 or below leaves file and line out
/// @param outTime takes the local time of the line; may be null
/// @return bytes of the prefix
FUNDO_API int Fundo_logOptionControl(char* dst, unsigned size, int level, const char* libName,
                                     const char* file, const char* function, int line, const char* version,
                                     Tovra::Fundo::SystemTimeEx* outTime);

/// Logs to standard output alone: past printer, attached procedures, log file, module table, statistics.
/// @return bytes wanted for the line, not capped; 0 if refused
FUNDO_API int Fundo_logFilter(int level, const char* libName, const char* file, const char* function,
                              int line, const char* version, const char* fmt, ...)
    __attribute__((format(printf, 7, 8)));

/// Writes the escape for a foreground colour (30 to 37) on black to standard output.
FUNDO_API void Fundo_set_console_color(int code);

/// Writes the escape that resets colours to standard output.
FUNDO_API void Fundo_reset_console_color();

/// Ends the colour of a line that has ended; does nothing within an open line.
FUNDO_API void Fundo_resetcolor();

/// Fills out with the local time. @return out
FUNDO_API Tovra::Fundo::SystemTimeEx* Fundo_getCurrentTimeEx(Tovra::Fundo::SystemTimeEx* out);

/// The kernel's id of the calling thread, as CThread::getCurrentThreadID() gives it.
FUNDO_API unsigned Fundo_getCurrentThreadID();

/// The 13 flags of PrintOptions as the composer reads them, one byte each. Never null.
FUNDO_API char* Fundo_getPrintOption();

/// The offset of the text behind the last "/" of a path; -1 if there is no such text or no "/".
FUNDO_API int Fundo_reverseEqualOrder(char* path);

}  // extern "C"

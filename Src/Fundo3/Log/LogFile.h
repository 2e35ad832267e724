#pragma once

#include "Fundo/Fundo3/SystemTime.h"

namespace Tovra::Fundo::Detail {

// Appends a composed line to the log file, if a path is set, rolling or emptying the file first if it is due.
// The line reaches the system before this returns.
void writelog(const char* data, int size, const SystemTime& time);

// Closes the log file; the next line opens it again.
void closeLogFile();

// Returns when a write that was under way has finished; at once inside writelog().
void waitForLogFile();

// Whether the calling thread is inside writelog(): what fails there must not go back into the log.
bool insideLogFile();

// The settings of the command language. Plain values: a line in flight uses old or new ones.
struct LogFileSettings {
    static void setPath(const char* path);            // a path names a file; "" ends file logging
    static void setSizeLimit(const char* kilobytes);  // 0 means no limit in rolling mode
    static void setMaxFiles(const char* number);      // 0 means no limit
    static void setRolling(bool rolling);
    static void setByDay(bool byDay);
};

}  // namespace Tovra::Fundo::Detail

#pragma once

#include <atomic>
#include <string>

// What the command language writes and the log file reads. Numbers are relaxed atomics; the path goes over as
// a whole, under a lock that a line takes only when the path has changed.

namespace Tovra::Fundo::Detail {

struct LogPath {
    std::string file;    // s_logpath: the live file; empty means no file logging
    std::string search;  // s_logDir: the pattern under which archives are listed
};

extern std::atomic<int> s_logsize;           // bytes
extern std::atomic<int> s_logFileMaxNumber;  // files kept
extern std::atomic<bool> s_saveLogInOldWay;  // Contract: true means rolling archives, in spite of its name.
extern std::atomic<bool> s_saveLogByDay;

// Whether a path is set: a process without a log file pays a load a line.
bool hasLogPath();

// Brings known up to date. known and seen belong to the caller; seen starts at 0.
void refreshLogPath(LogPath& known, unsigned& seen);

}  // namespace Tovra::Fundo::Detail

#include "Fundo3/Log/Line.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "Fundo3/Log/LogFile.h"
#include "Fundo3/Log/ModuleTable.h"
#include "Fundo3/Log/Options.h"
#include "Fundo3/Log/Printer.h"
#include "Fundo3/Log/TextAppender.h"
#include "MiniFundo/PrintLog.h"

// A line lies in one buffer of 8192 bytes on the stack, the only storage it has. Only what can be seen of it
// is written: after a cut that includes its last two bytes, which go to the file as zeros.

namespace Tovra::Fundo::Detail {

namespace {

void noteReturned(const char* line, int wanted) {
    const bool cut = wanted >= kLineSize;
    const bool ended = cut || (wanted > 0 && line[wanted - 1] == '\n');
    __atomic_store_n(&Fundo_returned, ended ? 1 : 0, __ATOMIC_RELAXED);
}

// What a printer or procedure throws must not leave the colour open. A handler, not a destructor, since
// standard output is where a cancelled thread unwinds from.
void printAndResetColor(int level, const char* text) {
    try {
        print(level, text);
    } catch (...) {
        Fundo_resetcolor();
        throw;
    }
    Fundo_resetcolor();
}

// The log file wants the date; the first seven fields lie alike in both records.
SystemTime dateOf(const SystemTimeEx& time) {
    return {time.year, time.month, time.day, time.wday, time.hour, time.minute, time.second, time.isdst};
}

}  // namespace

int composeLine(char (&buffer)[kLineSize], const LineLabel& label, SystemTimeEx* time, const char* format,
                va_list arguments) {
    constexpr int kRoom = kLineSize - 1;
    const int callersErrno = errno;
    const int prefix = Fundo_logOptionControl(buffer, kRoom, label.level, label.libName, label.file,
                                              label.function, label.line, label.version, time);
    if (prefix == -1) return -1;
    TextAppender lead(buffer + prefix, static_cast<size_t>(kRoom - prefix));
    const int length = prefix + static_cast<int>(lead.text(label.lead).finish());
    const auto left = static_cast<size_t>(kRoom - length);
    errno = callersErrno;  // for "%m"
    int wanted = std::vsnprintf(buffer + length, left, format, arguments);
    // A text that cannot be formatted shows as its format rather than not at all.
    if (wanted < 0) wanted = std::snprintf(buffer + length, left, "%s", format);
    buffer[kLineSize - 1] = '\0';
    const int total = length + std::min(wanted, INT_MAX - length);
    noteReturned(buffer, total);
    return total;
}

int printLine(const LineLabel& label, const char* format, va_list arguments) {
    const int callersErrno = errno;
    char buffer[kLineSize];
    SystemTimeEx time;
    const int wanted = composeLine(buffer, label, &time, format, arguments);
    if (wanted == -1) return 0;
    printAndResetColor(label.level, buffer);
    const int total = std::min(wanted, kLineSize);
    if (!isOptionSet(kNoLogFile)) writelog(buffer, total, dateOf(time));
    countLogged(label.libName, total);
    errno = callersErrno;
    return total;
}

int filterList(const LineLabel& label, const char* format, va_list arguments) {
    if (!isLevelOpen(label.level) || !isModuleOpen(label.libName)) return 0;
    LineLabel shown = label;
    if (label.version == nullptr || isOptionSet(kNoVersion)) shown.version = "";
    const char* slash = label.file != nullptr ? std::strrchr(label.file, '/') : nullptr;
    if (slash != nullptr) shown.file = slash + 1;
    // The level may have changed meanwhile.
    if (!isLevelOpen(label.level)) return 0;
    return printLine(shown, format, arguments);
}

}  // namespace Tovra::Fundo::Detail

#include "Fundo3/Log/Line.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Fundo3/Log/LogFile.h"
#include "Fundo3/Log/ModuleTable.h"
#include "Fundo3/Log/Options.h"
#include "Fundo3/Log/Printer.h"
#include "MiniFundo/PrintLog.h"

// A line lies in one buffer of 8192 bytes on the stack, the only storage it has. Only what can be seen of it
// is written: after a cut that includes its last two bytes, which go to the file as zeros.

namespace Tovra::Fundo::Detail {

namespace {

constexpr int kBufferSize = 8192;
constexpr int kRoom = kBufferSize - 1;

// @return the length wanted, prefix and lead included
int composeLine(char* buffer, const LineLabel& label, SystemTimeEx& time, const char* format,
                va_list arguments) {
    const int callersErrno = errno;
    int length = Fundo_logOptionControl(buffer, kRoom, label.level, label.libName, label.file, label.function,
                                        label.line, label.version, &time);
    const size_t lead = std::min(std::strlen(label.lead), static_cast<size_t>(kRoom - 1 - length));
    std::memcpy(buffer + length, label.lead, lead);
    length += static_cast<int>(lead);
    errno = callersErrno;  // for "%m"
    const int wanted =
        std::vsnprintf(buffer + length, static_cast<size_t>(kRoom - length), format, arguments);
    return length + std::max(wanted, 0);
}

void setReturned(bool ended) { __atomic_store_n(&Fundo_returned, ended ? 1 : 0, __ATOMIC_RELAXED); }

// The log file wants the date; the first seven fields lie alike in both records.
SystemTime dateOf(const SystemTimeEx& time) {
    return {time.year, time.month, time.day, time.wday, time.hour, time.minute, time.second, time.isdst};
}

// What a printer or procedure throws must not leave the colour open.
class ColorReset {
public:
    ColorReset() = default;
    ~ColorReset() { Fundo_resetcolor(); }
    ColorReset(const ColorReset&) = delete;
    ColorReset& operator=(const ColorReset&) = delete;
};

}  // namespace

int printLine(const LineLabel& label, const char* format, va_list arguments) {
    char buffer[kBufferSize];
    SystemTimeEx time;
    int total = composeLine(buffer, label, time, format, arguments);
    const bool cut = total >= kBufferSize;
    setReturned(cut || (total > 0 && buffer[total - 1] == '\n'));
    {
        const ColorReset reset;
        print(label.level, buffer);
    }
    if (cut) {
        buffer[kBufferSize - 1] = '\0';
        total = kBufferSize;
    }
    if (!isOptionSet(kNoLogFile)) writelog(buffer, total, dateOf(time));
    countLogged(label.libName, total);
    return total;
}

int logList(int level, const char* libName, const char* format, va_list arguments) {
    if (!isLevelOpen(level)) return 0;
    return printLine({level, libName, "", "", -1, "", ""}, format, arguments);
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

#pragma once

#include <cstdarg>

#include "Fundo3/Report.h"

namespace Tovra::Fundo::Detail {

// Where a line comes from and how it is labelled.
struct LineLabel {
    int level;
    const char* libName;
    const char* file;
    const char* function;
    int line;  // -1 without a source place
    const char* version;
    const char* lead;  // stands in front of the message
};

// The whole way of a line that the gates have let through: composed, printed, filed, counted.
// Out of line: the gates of callers must not pay for the buffer's frame.
// @return bytes composed, 8192 after a cut
int printLine(const LineLabel& label, const char* format, va_list arguments) __attribute__((noinline));

// The level functions of both families: gate, then a line without a source place.
int logList(int level, const char* libName, const char* format, va_list arguments);

// The filtered entry behind logFilter() and the library's own reports.
int filterList(const LineLabel& label, const char* format, va_list arguments);

}  // namespace Tovra::Fundo::Detail

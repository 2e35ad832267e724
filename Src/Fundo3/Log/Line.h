#pragma once

#include <cstdarg>

#include "Fundo3/Report.h"

// The way of a line, in three steps: entries test the gates and own no buffer, so that a refused line costs
// the test alone; composeLine() makes the text; printLine(), or the flat path, delivers it.

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

// A line with its terminator.
constexpr int kLineSize = 8192;

// Makes prefix, lead and message of a line, and notes whether the next call continues it. What is longer is
// cut two bytes before the end of the buffer; the bytes behind a cut are zero.
// @return bytes wanted; -1 if nothing was composed
int composeLine(char (&buffer)[kLineSize], const LineLabel& label, SystemTimeEx* time, const char* format,
                va_list arguments);

// The whole way of a line that the gates have let through: composed, printed, filed, counted.
// Out of line: the gates of callers must not pay for the buffer's frame.
// @return bytes composed, 8192 after a cut
int printLine(const LineLabel& label, const char* format, va_list arguments) __attribute__((noinline));

// The filtered entry behind logFilter() and the library's own reports.
int filterList(const LineLabel& label, const char* format, va_list arguments);

}  // namespace Tovra::Fundo::Detail

// Composes what stands in front of a message. A line made of several calls is opened by the first alone.

#include "Fundo3/Log/Console.h"
#include "Fundo3/Log/Options.h"
#include "Fundo3/Log/TextAppender.h"
#include "Fundo3/Report.h"
#include "MiniFundo/PrintLog.h"
#include "Platform/ThreadId.h"

using namespace Tovra::Fundo;
using namespace Tovra::Fundo::Detail;

static char s_printOptions[kOptionFlagCount];

char* Fundo_getPrintOption() { return s_printOptions; }

bool Tovra::Fundo::Detail::isFlatFlagSet(OptionFlag flag) {
    return __atomic_load_n(s_printOptions + flag, __ATOMIC_RELAXED) != 0;
}

namespace {

// The words end in a blank of their own.
const char* levelWord(int level) {
    static constexpr const char* s_preInfo[] = {"",      "fatal ", "error ", "warn ",
                                                "info ", "trace ", "debug ", nullptr};
    return level >= 0 && level <= kDebug ? s_preInfo[level] : "";
}

void appendDateAndTime(TextAppender& out, const SystemTimeEx& time) {
    if (isFlatFlagSet(kShowDate)) {
        out.number(time.year, 4).literal("-").number(time.month, 2).literal("-").number(time.day, 2);
        out.literal(" ");
    }
    if (isFlatFlagSet(kNoTime)) return;
    out.number(time.hour, 2).literal(":").number(time.minute, 2).literal(":").number(time.second, 2);
    if (isFlatFlagSet(kShowMillisecond)) out.literal(":").number(time.millisecond, 3, ' ');
    out.literal("|");
}

struct LineFields {
    int level;
    const char* libName;
    const char* file;
    const char* function;
    int line;
    const char* version;
};

// How one field looks: behind an opening, in front of a close.
struct Frame {
    const char* open;
    const char* close;
};

struct Form {
    Frame libName, version, level, file, function, line, thread;
};

constexpr Form kPlain = {{"[", "] "}, {"[ver:", "] "}, {"", ""},     {"", " "},
                         {"", " "},   {"", " "},       {"tid:", " "}};
constexpr Form kStructured = {{"M:", "|"}, {"V:", "|"}, {"L:", "|"}, {"F:", "|"},
                              {"f:", "|"}, {"l:", "|"}, {"t:", "|"}};

void appendText(TextAppender& out, const Frame& frame, const char* text) {
    out.text(frame.open).text(text).text(frame.close);
}

void appendNumber(TextAppender& out, const Frame& frame, int number) {
    out.text(frame.open).number(number).text(frame.close);
}

void appendFields(TextAppender& out, const LineFields& origin, const SystemTimeEx& time) {
    const bool structured = isFlatFlagSet(kStructuredForm);
    const Form& form = structured ? kStructured : kPlain;
    if (structured) out.literal("|T:");
    appendDateAndTime(out, time);
    if (!isFlatFlagSet(kNoLibName)) appendText(out, form.libName, origin.libName);
    if (!isFlatFlagSet(kNoVersion)) appendText(out, form.version, origin.version);
    if (!isFlatFlagSet(kNoLevel)) appendText(out, form.level, levelWord(origin.level));
    if (origin.line > 0 && !isFlatFlagSet(kNoFile)) appendText(out, form.file, origin.file);
    if (!isFlatFlagSet(kNoFunction)) appendText(out, form.function, origin.function);
    if (origin.line > 0 && !isFlatFlagSet(kNoLine)) appendNumber(out, form.line, origin.line);
    if (!isFlatFlagSet(kNoThread)) appendNumber(out, form.thread, Platform::currentThreadId());
    if (structured) out.literal("m:");
}

}  // namespace

int Fundo_logOptionControl(char* dst, unsigned size, int level, const char* libName, const char* file,
                           const char* function, int line, const char* version, SystemTimeEx* outTime) {
    SystemTimeEx time;
    Fundo_getCurrentTimeEx(&time);
    if (outTime != nullptr) *outTime = time;
    if (__atomic_load_n(&Fundo_returned, __ATOMIC_RELAXED) == 0) return 0;
    openLineColor(level);
    if (size == 0) return 0;
    TextAppender out(dst, size);
    appendFields(out, {level, libName, file, function, line, version}, time);
    return static_cast<int>(out.finish());
}

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
const ShortText& levelWord(int level) {
    static constexpr ShortText s_preInfo[] = {"", "fatal ", "error ", "warn ", "info ", "trace ", "debug "};
    return s_preInfo[level >= 0 && level <= kDebug ? level : 0];
}

void appendDateAndTime(TextAppender& out, const SystemTimeEx& time) {
    if (isFlatFlagSet(kShowDate)) {
        out.number(time.year, 4).literal("-").pair(time.month).literal("-").pair(time.day).literal(" ");
    }
    if (isFlatFlagSet(kNoTime)) return;
    out.pair(time.hour).literal(":").pair(time.minute).literal(":").pair(time.second);
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
    ShortText open;
    ShortText close;
};

struct Form {
    Frame libName, version, level, file, function, line, thread;
};

constexpr Form kPlain = {{"[", "] "}, {"[ver:", "] "}, {"", ""},     {"", " "},
                         {"", " "},   {"", " "},       {"tid:", " "}};
constexpr Form kStructured = {{"M:", "|"}, {"V:", "|"}, {"L:", "|"}, {"F:", "|"},
                              {"f:", "|"}, {"l:", "|"}, {"t:", "|"}};

void appendText(TextAppender& out, const Frame& frame, const char* text) {
    out.literal(frame.open).text(text).literal(frame.close);
}

void appendNumber(TextAppender& out, const Frame& frame, int number) {
    out.literal(frame.open).number(number).literal(frame.close);
}

void appendFields(TextAppender& out, const LineFields& origin, const SystemTimeEx& time) {
    const bool structured = isFlatFlagSet(kStructuredForm);
    const Form& form = structured ? kStructured : kPlain;
    if (structured) out.literal("|T:");
    appendDateAndTime(out, time);
    if (!isFlatFlagSet(kNoLibName)) appendText(out, form.libName, origin.libName);
    if (!isFlatFlagSet(kNoVersion)) appendText(out, form.version, origin.version);
    if (!isFlatFlagSet(kNoLevel)) {
        out.literal(form.level.open).literal(levelWord(origin.level)).literal(form.level.close);
    }
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

// The console: standard output, and the colour escapes, which go there through the same stream as the text,
// also while a printer takes the text.

#include "Fundo3/Log/Console.h"

#include <atomic>
#include <cstdio>

#include "Fundo3/Log/Options.h"
#include "Fundo3/Log/TextAppender.h"
#include "Fundo3/Report.h"
#include "MiniFundo/PrintLog.h"

namespace {

// An escape has been written and not yet reset.
std::atomic<bool> s_setConsoleColorComplete{false};

int colorOf(int level) {
    static constexpr signed char s_color[] = {0, 35, 31, 33, 32, 37, 36};
    return level >= 0 && level <= Tovra::Fundo::Detail::kDebug ? s_color[level] : 0;
}

}  // namespace

int Fundo_print(int, const char* text) { return std::fputs(text, stdout); }

void Fundo_set_console_color(int code) {
    char text[24];
    Tovra::Fundo::Detail::TextAppender escape(text, sizeof text);
    escape.literal("\033[").number(code).literal(";40m").finish();
    std::fputs(text, stdout);
}

void Fundo_reset_console_color() { std::fputs("\033[0m", stdout); }

void Tovra::Fundo::Detail::openLineColor(int level) {
    if (isFlatFlagSet(kNoColor)) return;
    Fundo_set_console_color(colorOf(level));
    s_setConsoleColorComplete.store(true, std::memory_order_relaxed);
}

// A line whose colour opened before colours were turned off is still closed.
void Fundo_resetcolor() {
    using namespace Tovra::Fundo::Detail;
    if (__atomic_load_n(&Fundo_returned, __ATOMIC_RELAXED) == 0) return;
    if (isFlatFlagSet(kNoColor) && !s_setConsoleColorComplete.load(std::memory_order_relaxed)) return;
    Fundo_reset_console_color();
    s_setConsoleColorComplete.store(false, std::memory_order_relaxed);
}

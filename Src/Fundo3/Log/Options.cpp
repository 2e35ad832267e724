#include "Fundo3/Log/Options.h"

#include <cstdio>
#include <cstring>

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/PrintLog";

static_assert(offsetof(PrintOptions, noLogFile) == Detail::kNoLogFile, "flags lie in the flags' order");
static_assert(offsetof(PrintOptions, reserved) == Detail::kOptionFlagCount, "one byte a flag");

namespace {

char s_printOptions[sizeof(PrintOptions)];

void storeBytes(char* to, const char* from, size_t count) {
    for (size_t i = 0; i < count; ++i)
        __atomic_store_n(to + i, from[i], __ATOMIC_RELAXED);
}

}  // namespace

bool Detail::isOptionSet(OptionFlag flag) {
    return __atomic_load_n(s_printOptions + flag, __ATOMIC_RELAXED) != 0;
}

void Detail::setOption(OptionFlag flag, bool on) {
    const char byte = on ? 1 : 0;
    storeBytes(s_printOptions + flag, &byte, 1);
    storeBytes(Fundo_getPrintOption() + flag, &byte, 1);
}

void setPrintOptions(PrintOptions options) {
    char bytes[sizeof options];
    std::memcpy(bytes, &options, sizeof options);
    storeBytes(s_printOptions, bytes, sizeof bytes);
    char* const flags = Fundo_getPrintOption();
    if (flags == nullptr) {
        std::printf("[%s:%s:%d]Printlog Error, pPrintOption is NULL.\n", kSource, "setPrintOptions",
                    __LINE__);
        return;
    }
    storeBytes(flags, bytes, Detail::kOptionFlagCount);
}

void getPrintOptions(PrintOptions* out) {
    char bytes[sizeof *out];
    for (size_t i = 0; i < sizeof bytes; ++i) {
        bytes[i] = __atomic_load_n(s_printOptions + i, __ATOMIC_RELAXED);
    }
    std::memcpy(out, bytes, sizeof bytes);
}

}  // namespace Tovra::Fundo

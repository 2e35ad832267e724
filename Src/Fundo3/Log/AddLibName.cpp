#include <cstring>

#include "Fundo/PrintLog.h"

unsigned addLibName(const char* name, char* out, unsigned max) {
    const auto length = name != nullptr ? static_cast<unsigned>(strnlen(name, max)) : 0U;
    out[0] = '[';
    if (length > 0) std::memcpy(out + 1, name, length);
    std::memcpy(out + 1 + length, "] ", 2);
    return length + 3;
}

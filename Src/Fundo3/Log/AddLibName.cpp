#include <algorithm>
#include <cstring>

#include "Fundo/PrintLog.h"

unsigned addLibName(const char* name, char* out, unsigned max) {
    const auto length = static_cast<unsigned>(std::min<size_t>(std::strlen(name), max));
    out[0] = '[';
    std::memcpy(out + 1, name, length);
    std::memcpy(out + 1 + length, "] ", 2);
    return length + 3;
}

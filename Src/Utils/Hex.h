// Bytes as lower-case hexadecimal digits, two a byte, without a terminator.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tovra::Utils {

inline void toHex(char* text, const uint8_t* bytes, size_t count) {
    constexpr char kDigits[] = "0123456789abcdef";
    for (size_t i = 0; i < count; ++i) {
        *text++ = kDigits[bytes[i] >> 4];
        *text++ = kDigits[bytes[i] & 15];
    }
}

}  // namespace Tovra::Utils

// Words in memory, whatever the byte order of the machine. Not composed of bytes, since compilers do not make
// a single move of that everywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Tovra::Utils::AES {

inline constexpr bool kLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

inline std::uint32_t loadWord(const std::uint8_t* p) {
    std::uint32_t x;
    std::memcpy(&x, p, sizeof x);
    return kLittleEndian ? x : __builtin_bswap32(x);
}

inline void storeWord(std::uint8_t* p, std::uint32_t x) {
    if (!kLittleEndian) x = __builtin_bswap32(x);
    std::memcpy(p, &x, sizeof x);
}

inline std::uint64_t loadBigEndian(const std::uint8_t* p) {
    std::uint64_t x;
    std::memcpy(&x, p, sizeof x);
    return kLittleEndian ? __builtin_bswap64(x) : x;
}

inline void storeBigEndian(std::uint8_t* p, std::uint64_t x) {
    if (kLittleEndian) x = __builtin_bswap64(x);
    std::memcpy(p, &x, sizeof x);
}

}  // namespace Tovra::Utils::AES

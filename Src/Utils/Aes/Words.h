// Words in memory, whatever the byte order of the machine; compilers make each a single move.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Tovra::Utils::AES {

inline std::uint32_t loadWord(const std::uint8_t* p) {
    return std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16 |
           std::uint32_t{p[3]} << 24;
}

inline void storeWord(std::uint8_t* p, std::uint32_t x) {
    for (unsigned i = 0; i < 4; ++i)
        p[i] = static_cast<std::uint8_t>(x >> (8 * i));
}

inline std::uint64_t loadBigEndian(const std::uint8_t* p) {
    std::uint64_t x = 0;
    for (unsigned i = 0; i < 8; ++i)
        x = x << 8 | p[i];
    return x;
}

inline void storeBigEndian(std::uint8_t* p, std::uint64_t x) {
    for (unsigned i = 0; i < 8; ++i)
        p[i] = static_cast<std::uint8_t>(x >> (56 - 8 * i));
}

}  // namespace Tovra::Utils::AES

// Words of a stated byte order at any address; each compiles to one move, with a swap where it needs one.
#pragma once

#include <cstdint>

namespace Tovra::Utils {

inline uint32_t loadLittle32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

inline uint64_t loadLittle64(const uint8_t* p) {
    return static_cast<uint64_t>(p[0]) | static_cast<uint64_t>(p[1]) << 8 |
           static_cast<uint64_t>(p[2]) << 16 | static_cast<uint64_t>(p[3]) << 24 |
           static_cast<uint64_t>(p[4]) << 32 | static_cast<uint64_t>(p[5]) << 40 |
           static_cast<uint64_t>(p[6]) << 48 | static_cast<uint64_t>(p[7]) << 56;
}

inline uint32_t loadBig32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 |
           static_cast<uint32_t>(p[2]) << 8 | static_cast<uint32_t>(p[3]);
}

inline uint64_t loadBig64(const uint8_t* p) {
    return static_cast<uint64_t>(loadBig32(p)) << 32 | loadBig32(p + 4);
}

inline void storeLittle32(uint8_t* p, uint32_t value) {
    for (unsigned i = 0; i < 4; ++i)
        p[i] = static_cast<uint8_t>(value >> (8 * i));
}

inline void storeBig32(uint8_t* p, uint32_t value) {
    for (unsigned i = 0; i < 4; ++i)
        p[i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

inline void storeBig64(uint8_t* p, uint64_t value) {
    for (unsigned i = 0; i < 8; ++i)
        p[i] = static_cast<uint8_t>(value >> (56 - 8 * i));
}

}  // namespace Tovra::Utils

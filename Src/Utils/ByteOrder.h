// Words of a stated byte order at any address. Not composed of bytes, since compilers do not make a single
// move of that everywhere.
#pragma once

#include <cstdint>
#include <cstring>

namespace Tovra::Utils {

inline uint32_t swapped(uint32_t value) { return __builtin_bswap32(value); }
inline uint64_t swapped(uint64_t value) { return __builtin_bswap64(value); }

template <typename Word, int order>
Word loadWord(const uint8_t* p) {
    Word value;
    std::memcpy(&value, p, sizeof value);
    return order == __BYTE_ORDER__ ? value : swapped(value);
}

template <int order, typename Word>
void storeWord(uint8_t* p, Word value) {
    if (order != __BYTE_ORDER__) value = swapped(value);
    std::memcpy(p, &value, sizeof value);
}

inline uint32_t loadLittle32(const uint8_t* p) { return loadWord<uint32_t, __ORDER_LITTLE_ENDIAN__>(p); }
inline uint64_t loadLittle64(const uint8_t* p) { return loadWord<uint64_t, __ORDER_LITTLE_ENDIAN__>(p); }
inline uint32_t loadBig32(const uint8_t* p) { return loadWord<uint32_t, __ORDER_BIG_ENDIAN__>(p); }
inline uint64_t loadBig64(const uint8_t* p) { return loadWord<uint64_t, __ORDER_BIG_ENDIAN__>(p); }

inline void storeLittle32(uint8_t* p, uint32_t value) { storeWord<__ORDER_LITTLE_ENDIAN__>(p, value); }
inline void storeBig32(uint8_t* p, uint32_t value) { storeWord<__ORDER_BIG_ENDIAN__>(p, value); }
inline void storeBig64(uint8_t* p, uint64_t value) { storeWord<__ORDER_BIG_ENDIAN__>(p, value); }

}  // namespace Tovra::Utils

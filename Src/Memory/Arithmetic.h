#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace Tovra::Memory {

// The base-2 logarithm, rounded down, of a number that is not 0.
inline unsigned floorLog2(size_t value) {
    constexpr int kTopBit = std::numeric_limits<unsigned long long>::digits - 1;
    return static_cast<unsigned>(kTopBit - __builtin_clzll(value));
}

// The largest object there can be; sizes beyond it are not even asked of an allocator.
constexpr size_t kMaxBytes = PTRDIFF_MAX;

// A sum that sticks at the top of its type, beyond kMaxBytes, instead of wrapping to a small one.
inline size_t saturatedSum(size_t a, size_t b) { return a <= SIZE_MAX - b ? a + b : SIZE_MAX; }

}  // namespace Tovra::Memory

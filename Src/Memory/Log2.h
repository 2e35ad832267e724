#pragma once

#include <cstddef>
#include <limits>

namespace Tovra::Memory {

// The base-2 logarithm, rounded down, of a number that is not 0.
inline unsigned floorLog2(size_t value) {
    constexpr int kTopBit = std::numeric_limits<unsigned long long>::digits - 1;
    return static_cast<unsigned>(kTopBit - __builtin_clzll(value));
}

}  // namespace Tovra::Memory

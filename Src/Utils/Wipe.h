// Overwriting secrets that are about to be freed or to go out of scope.
#pragma once

#include <cstddef>
#include <cstring>

namespace Tovra::Utils {

// Zeroes n bytes. The compiler may not drop it although nothing reads them again: the barrier might.
inline void wipe(void* p, size_t n) {
    if (n == 0) return;
    std::memset(p, 0, n);
    __asm__ __volatile__("" : : "r"(p) : "memory");
}

}  // namespace Tovra::Utils

#include "Fundo/Log2i.h"

#include <cstdint>

int log2i(unsigned long x) {
    auto rest = static_cast<uint32_t>(x);
    int result = 0;
    for (int step = 16; step > 0; step /= 2) {
        if (rest >> step == 0) continue;
        rest >>= step;
        result += step;
    }
    return result;
}

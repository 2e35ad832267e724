#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "Utils/CpuFeatures.h"

namespace Samples {

using Bytes = std::vector<std::uint8_t>;

// Random bytes, the same in each run.
inline Bytes bytes(std::size_t size, unsigned seed = 1) {
    std::mt19937 random(seed);
    Bytes result(size);
    for (std::uint8_t& byte : result)
        byte = static_cast<std::uint8_t>(random());
    return result;
}

// Cuts a length into random pieces, empty ones among them, and hands out where each starts and its size.
template <class Take>
void inPieces(std::size_t length, std::mt19937& random, Take take) {
    for (std::size_t done = 0, piece; done < length; done += piece) {
        piece = std::min<std::size_t>(random() % 200, length - done);
        take(done, piece);
    }
}

}  // namespace Samples

// Feeds a stream to a function that wants blocks of 64 bytes: whole blocks straight from the caller's data,
// the rest through a buffer.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Tovra::Utils {

constexpr size_t kBlock = 64;

// Takes data behind the bytes that wait in the buffer; compress(blocks, count) gets what is whole. Answers
// how many bytes wait now.
template <class Compress>
size_t feedBlocks(uint8_t (&buffer)[kBlock], size_t waiting, const uint8_t* data, size_t length,
                  Compress compress) {
    if (waiting != 0) {
        const size_t piece = std::min(length, kBlock - waiting);
        std::copy_n(data, piece, buffer + waiting);
        if (waiting + piece < kBlock) return waiting + piece;
        compress(buffer, size_t{1});
        data += piece;
        length -= piece;
    }
    const size_t blocks = length / kBlock;
    if (blocks != 0) compress(data, blocks);
    std::copy_n(data + blocks * kBlock, length % kBlock, buffer);
    return length % kBlock;
}

// Ends a stream: a one bit, zeros, and the eight bytes of its length at the end of a block.
template <class Compress>
void padBlocks(uint8_t (&buffer)[kBlock], size_t waiting, const uint8_t (&length)[8], Compress compress) {
    constexpr size_t kLengthAt = kBlock - sizeof length;
    buffer[waiting++] = 0x80;
    if (waiting > kLengthAt) {
        std::memset(buffer + waiting, 0, kBlock - waiting);
        compress(buffer, size_t{1});
        waiting = 0;
    }
    std::memset(buffer + waiting, 0, kLengthAt - waiting);
    std::copy_n(length, sizeof length, buffer + kLengthAt);
    compress(buffer, size_t{1});
}

}  // namespace Tovra::Utils

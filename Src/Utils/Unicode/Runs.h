// Runs of text that a vector of bytes takes at once. Each function converts from the front of a text and
// answers how many units it took, 0 where the front is no such run, too short, or the processor lacks the
// instructions: the caller then goes on by single characters. Nothing is written behind the units taken.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tovra::Utils::Detail {

// Bytes below 0x80 to units, sixteen and more at a time.
size_t widenAscii(unsigned short* dst, const unsigned char* src, size_t size);

// Sequences of three bytes to units.
size_t decodeTriples(unsigned short* dst, const unsigned char* src, size_t size);

// Units are read in aligned blocks: a block that holds one unit of the text lies within its page, so that
// the text may end anywhere in it. src must be at the start of a block.
constexpr size_t kBlockUnits = 8;

inline bool isBlockStart(const unsigned short* src) {
    return reinterpret_cast<uintptr_t>(src) % (kBlockUnits * sizeof *src) == 0;
}

// Units from 1 to 0x7F to bytes, up to a limit of units, whole blocks.
size_t narrowAscii(unsigned char* dst, const unsigned short* src, size_t limit);

// Units from 0x800 on to sequences of three bytes, up to a limit of units, whole blocks.
size_t encodeTriples(unsigned char* dst, const unsigned short* src, size_t limit);

}  // namespace Tovra::Utils::Detail

// DES over blocks side by side.
//
// A round waits for look-ups that depend on the round before, so a single block leaves most of the processor
// idle; blocks that do not depend on each other go through the rounds together.
//
// Between begin() and end(), the initial and the final permutation, words stand turned left by one place.
// Then the six bits for an S-box are the low bits of a byte: for the boxes 2, 4, 6, 8 as the word stands, for
// 1, 3, 5, 7 when it is turned right by four.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "Utils/ByteOrder.h"
#include "Utils/Des.h"
#include "Utils/Des/DesTables.h"

namespace Tovra::Utils::Des {

constexpr size_t kBlockBytes = 8;

template <size_t Count>
struct Blocks {
    uint32_t left[Count];
    uint32_t right[Count];
};

inline uint32_t turnedLeft(uint32_t word, unsigned places) { return word << places | word >> (32 - places); }
inline uint32_t turnedRight(uint32_t word, unsigned places) { return word >> places | word << (32 - places); }

// Exchanges the bits of b under the mask with those of a that stand some places higher.
inline void exchange(uint32_t& a, uint32_t& b, unsigned places, uint32_t mask) {
    const uint32_t differing = ((a >> places) ^ b) & mask;
    b ^= differing;
    a ^= differing << places;
}

template <size_t Count>
void begin(Blocks<Count>& blocks) {
    for (size_t i = 0; i < Count; ++i) {
        uint32_t& left = blocks.left[i];
        uint32_t& right = blocks.right[i];
        exchange(left, right, 4, 0x0f0f0f0f);
        exchange(left, right, 16, 0x0000ffff);
        exchange(right, left, 2, 0x33333333);
        exchange(right, left, 8, 0x00ff00ff);
        right = turnedLeft(right, 1);
        exchange(left, right, 0, 0xaaaaaaaa);
        left = turnedLeft(left, 1);
    }
}

template <size_t Count>
void end(Blocks<Count>& blocks) {
    for (size_t i = 0; i < Count; ++i) {
        uint32_t& left = blocks.left[i];
        uint32_t& right = blocks.right[i];
        left = turnedRight(left, 1);
        exchange(left, right, 0, 0xaaaaaaaa);
        right = turnedRight(right, 1);
        exchange(right, left, 8, 0x00ff00ff);
        exchange(right, left, 2, 0x33333333);
        exchange(left, right, 16, 0x0000ffff);
        exchange(left, right, 4, 0x0f0f0f0f);
    }
}

inline uint32_t mix(uint32_t word, const unsigned long* keys) {
    const uint32_t odd = turnedRight(word, 4) ^ static_cast<uint32_t>(keys[0]);
    const uint32_t even = word ^ static_cast<uint32_t>(keys[1]);
    const uint32_t odds = SP.box[0].of[odd >> 24 & 63] ^ SP.box[2].of[odd >> 16 & 63] ^
                          SP.box[4].of[odd >> 8 & 63] ^ SP.box[6].of[odd & 63];
    const uint32_t evens = SP.box[1].of[even >> 24 & 63] ^ SP.box[3].of[even >> 16 & 63] ^
                           SP.box[5].of[even >> 8 & 63] ^ SP.box[7].of[even & 63];
    return odds ^ evens;
}

// The sixteen rounds and the exchange of the halves behind them.
template <size_t Count>
void rounds(Blocks<Count>& blocks, const unsigned long* keys) {
    for (size_t round = 0; round < kRounds; round += 2, keys += 4) {
        for (size_t i = 0; i < Count; ++i)
            blocks.left[i] ^= mix(blocks.right[i], keys);
        for (size_t i = 0; i < Count; ++i)
            blocks.right[i] ^= mix(blocks.left[i], keys + 2);
    }
    for (size_t i = 0; i < Count; ++i)
        std::swap(blocks.left[i], blocks.right[i]);
}

template <size_t Count>
Blocks<Count> load(const uint8_t* in) {
    Blocks<Count> blocks;
    for (size_t i = 0; i < Count; ++i, in += kBlockBytes) {
        const uint64_t block = loadBig64(in);
        blocks.left[i] = static_cast<uint32_t>(block >> 32);
        blocks.right[i] = static_cast<uint32_t>(block);
    }
    return blocks;
}

template <size_t Count>
void store(uint8_t* out, const Blocks<Count>& blocks) {
    for (size_t i = 0; i < Count; ++i, out += kBlockBytes)
        storeBig64(out, static_cast<uint64_t>(blocks.left[i]) << 32 | blocks.right[i]);
}

// One key: single DES of Count blocks.
template <size_t Count>
void once(const uint8_t* in, uint8_t* out) {
    Blocks<Count> blocks = load<Count>(in);
    begin(blocks);
    rounds(blocks, KnL);
    end(blocks);
    store(out, blocks);
}

// Between two passes of a group of blocks, each right word changes places with the left word behind it. For a
// group of one, the permutations of the two passes cancel.
template <size_t Group, size_t Count>
void betweenPasses(Blocks<Count>& blocks) {
    if (Group == 1) return;
    end(blocks);
    for (size_t i = 0; i + 1 < Count; ++i) {
        if ((i + 1) % Group != 0) std::swap(blocks.right[i], blocks.left[i + 1]);
    }
    begin(blocks);
}

// All three registers: triple DES of Count groups.
template <size_t Group, size_t Count>
void thrice(const uint8_t* in, uint8_t* out) {
    Blocks<Group* Count> blocks = load<Group * Count>(in);
    begin(blocks);
    rounds(blocks, KnL);
    betweenPasses<Group>(blocks);
    rounds(blocks, KnR);
    betweenPasses<Group>(blocks);
    rounds(blocks, Kn3);
    end(blocks);
    store(out, blocks);
}

}  // namespace Tovra::Utils::Des

// The tables of FIPS 46-3, and those made from them for speed. Bits count from 1, the highest, as there.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tovra::Utils::Des {

constexpr size_t kBoxes = 8;
constexpr size_t kRounds = 16;

inline constexpr uint8_t kBox[kBoxes][64] = {
    {14, 4,  13, 1, 2,  15, 11, 8, 3, 10, 6, 12, 5,  9,  0,  7,  0,  15, 7,  4,  14, 2,
     13, 1,  10, 6, 12, 11, 9,  5, 3, 8,  4, 1,  14, 8,  13, 6,  2,  11, 15, 12, 9,  7,
     3,  10, 5,  0, 15, 12, 8,  2, 4, 9,  1, 7,  5,  11, 3,  14, 10, 0,  6,  13},
    {15, 1,  8,  14, 6,  11, 3,  4, 9,  7,  2, 13, 12, 0,  5,  10, 3,  13, 4,  7, 15, 2,
     8,  14, 12, 0,  1,  10, 6,  9, 11, 5,  0, 14, 7,  11, 10, 4,  13, 1,  5,  8, 12, 6,
     9,  3,  2,  15, 13, 8,  10, 1, 3,  15, 4, 2,  11, 6,  7,  12, 0,  5,  14, 9},
    {10, 0,  9,  14, 6, 3,  15, 5,  1,  13, 12, 7, 11, 4,  2,  8,  13, 7, 0,  9, 3, 4,
     6,  10, 2,  8,  5, 14, 12, 11, 15, 1,  13, 6, 4,  9,  8,  15, 3,  0, 11, 1, 2, 12,
     5,  10, 14, 7,  1, 10, 13, 0,  6,  9,  8,  7, 4,  15, 14, 3,  11, 5, 2,  12},
    {7, 13, 14, 3, 0, 6,  9, 10, 1,  2, 8,  5, 11, 12, 4,  15, 13, 8,  11, 5, 6, 15,
     0, 3,  4,  7, 2, 12, 1, 10, 14, 9, 10, 6, 9,  0,  12, 11, 7,  13, 15, 1, 3, 14,
     5, 2,  8,  4, 3, 15, 0, 6,  10, 1, 13, 8, 9,  4,  5,  11, 12, 7,  2,  14},
    {2,  12, 4, 1,  7,  10, 11, 6, 8, 5,  3, 15, 13, 0,  14, 9,  14, 11, 2,  12, 4,  7,
     13, 1,  5, 0,  15, 10, 3,  9, 8, 6,  4, 2,  1,  11, 10, 13, 7,  8,  15, 9,  12, 5,
     6,  3,  0, 14, 11, 8,  12, 7, 1, 14, 2, 13, 6,  15, 0,  9,  10, 4,  5,  3},
    {12, 1,  10, 15, 9,  2,  6, 8,  0, 13, 3,  4,  14, 7,  5, 11, 10, 15, 4, 2, 7, 12,
     9,  5,  6,  1,  13, 14, 0, 11, 3, 8,  9,  14, 15, 5,  2, 8,  12, 3,  7, 0, 4, 10,
     1,  13, 11, 6,  4,  3,  2, 12, 9, 5,  15, 10, 11, 14, 1, 7,  6,  0,  8, 13},
    {4, 11, 2,  14, 15, 0,  8,  13, 3, 12, 9,  7, 5,  10, 6,  1,  13, 0,  11, 7,  4, 9,
     1, 10, 14, 3,  5,  12, 2,  15, 8, 6,  1,  4, 11, 13, 12, 3,  7,  14, 10, 15, 6, 8,
     0, 5,  9,  2,  6,  11, 13, 8,  1, 4,  10, 7, 9,  5,  0,  15, 14, 2,  3,  12},
    {13, 2, 8,  4, 6, 15, 11, 1,  10, 9,  3, 14, 5,  0,  12, 7,  1,  15, 13, 8, 10, 3,
     7,  4, 12, 5, 6, 11, 0,  14, 9,  2,  7, 11, 4,  1,  9,  12, 14, 2,  0,  6, 10, 13,
     15, 3, 5,  8, 2, 1,  14, 7,  4,  10, 8, 13, 15, 12, 9,  0,  3,  5,  6,  11}};

// Where each bit of a permutation's output comes from.
inline constexpr uint8_t kBoxPermutation[32] = {16, 7, 20, 21, 29, 12, 28, 17, 1,  15, 23,
                                                26, 5, 18, 31, 10, 2,  8,  24, 14, 32, 27,
                                                3,  9, 19, 13, 30, 6,  22, 11, 4,  25};
inline constexpr uint8_t pc1[56] = {57, 49, 41, 33, 25, 17, 9,  1,  58, 50, 42, 34, 26, 18,
                                    10, 2,  59, 51, 43, 35, 27, 19, 11, 3,  60, 52, 44, 36,
                                    63, 55, 47, 39, 31, 23, 15, 7,  62, 54, 46, 38, 30, 22,
                                    14, 6,  61, 53, 45, 37, 29, 21, 13, 5,  28, 20, 12, 4};
inline constexpr uint8_t pc2[48] = {14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,
                                    26, 8,  16, 7,  27, 20, 13, 2,  41, 52, 31, 37, 47, 55, 30, 40,
                                    51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};
// By how many places the halves of the key are turned in a round, all told.
inline constexpr uint8_t totrot[kRounds] = {1, 2, 4, 6, 8, 10, 12, 14, 15, 17, 19, 21, 23, 25, 27, 28};

// An S-box and the permutation behind it in one look-up. The words of a block stand turned left by one place
// during the rounds, so the results do too.
struct BoxTable {
    uint32_t of[64];
};
struct BoxTables {
    BoxTable box[kBoxes];
};
constexpr BoxTables makeBoxTables() {
    BoxTables tables{};
    for (size_t box = 0; box < kBoxes; ++box) {
        for (unsigned input = 0; input < 64; ++input) {
            // The outer bits of the input are the row, the inner ones the column.
            const unsigned row = (input >> 4 & 2) | (input & 1);
            const uint32_t value = static_cast<uint32_t>(kBox[box][row * 16 + (input >> 1 & 15)])
                                   << (28 - 4 * box);
            uint32_t result = 0;
            for (size_t bit = 0; bit < 32; ++bit)
                result |= (value >> (32 - kBoxPermutation[bit]) & 1) << (31 - bit);
            tables.box[box].of[input] = result << 1 | result >> 31;
        }
    }
    return tables;
}
inline constexpr BoxTables SP = makeBoxTables();

// The round keys are linear in the key: those of a key are the XOR of those of its bits. The tables hold them
// by half bytes of the key, so that a key schedule is the XOR of sixteen entries. An entry has 64 bits a
// round, the word for the boxes 1, 3, 5, 7 in the low half and that for 2, 4, 6, 8 in the high half.
struct RoundKeys {
    uint64_t round[kRounds];
};
struct KeyTables {
    RoundKeys half[16][16];
};
constexpr KeyTables makeKeyTables() {
    KeyTables tables{};
    for (size_t round = 0; round < kRounds; ++round) {
        for (size_t bit = 0; bit < 48; ++bit) {
            const size_t turned = pc2[bit] - 1u;
            const size_t side = turned / 28 * 28;
            const size_t keyBit = pc1[side + (turned - side + totrot[round]) % 28] - 1u;
            const size_t box = bit / 6;
            const size_t place = 32 * (box % 2) + 24 - 8 * (box / 2) + 5 - bit % 6;
            tables.half[keyBit / 4][8u >> keyBit % 4].round[round] |= uint64_t{1} << place;
        }
    }
    for (auto& half : tables.half) {
        for (size_t value = 1; value < 16; ++value) {
            const size_t others = value & (value - 1);
            if (others == 0) continue;
            for (size_t round = 0; round < kRounds; ++round)
                half[value].round[round] = half[others].round[round] ^ half[value ^ others].round[round];
        }
    }
    return tables;
}

}  // namespace Tovra::Utils::Des

// The tables of the portable cipher, computed by the compiler from the field GF(2^8) of FIPS 197.
//
// A column of the state is a word, its first byte lowest. A forward table holds, for the byte of one row, the
// S-box and that row's share of MixColumns; a round's column is four look-ups and a round key. The tables of
// the other rows are byte rotations of the first. The reverse tables do the same for the inverse cipher.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Tovra::Utils::AES {

using ByteTable = std::array<std::uint8_t, 256>;
using WordTable = std::array<std::uint32_t, 256>;

struct Tables {
    ByteTable forward{}, reverse{};            // S-box and its inverse
    std::array<WordTable, 4> forwardRounds{};  // by row
    std::array<WordTable, 4> reverseRounds{};
};

constexpr std::uint8_t doubled(std::uint8_t x) {
    return static_cast<std::uint8_t>((x << 1) ^ ((x >> 7) * 0x1b));
}

constexpr std::uint32_t product(std::uint8_t x, unsigned factor) {
    std::uint8_t sum = 0;
    for (; factor != 0; factor >>= 1, x = doubled(x)) {
        if ((factor & 1) != 0) sum ^= x;
    }
    return sum;
}

constexpr std::uint32_t rotatedLeft(std::uint32_t x, unsigned bits) {
    return bits == 0 ? x : (x << bits) | (x >> (32 - bits));
}

// Walks the field by the generator 3 and, at once, by its inverse: q is always 1 / p.
constexpr void fillBoxes(Tables& tables) {
    std::uint8_t p = 1, q = 1;
    do {
        p = static_cast<std::uint8_t>(p ^ doubled(p));
        q = static_cast<std::uint8_t>(q ^ (q << 1));
        q = static_cast<std::uint8_t>(q ^ (q << 2));
        q = static_cast<std::uint8_t>(q ^ (q << 4));
        if ((q & 0x80) != 0) q ^= 0x09;
        const unsigned twice = q * 0x101u;
        tables.forward[p] =
            static_cast<std::uint8_t>(0x63 ^ q ^ (twice >> 7) ^ (twice >> 6) ^ (twice >> 5) ^ (twice >> 4));
    } while (p != 1);
    tables.forward[0] = 0x63;
    for (std::size_t i = 0; i < 256; ++i)
        tables.reverse[tables.forward[i]] = static_cast<std::uint8_t>(i);
}

constexpr Tables makeTables() {
    Tables tables;
    fillBoxes(tables);
    for (std::size_t i = 0; i < 256; ++i) {
        const std::uint8_t s = tables.forward[i];
        const std::uint8_t r = tables.reverse[i];
        const std::uint32_t f =
            product(s, 2) | product(s, 1) << 8 | product(s, 1) << 16 | product(s, 3) << 24;
        const std::uint32_t b =
            product(r, 14) | product(r, 9) << 8 | product(r, 13) << 16 | product(r, 11) << 24;
        for (unsigned row = 0; row < 4; ++row) {
            tables.forwardRounds[row][i] = rotatedLeft(f, 8 * row);
            tables.reverseRounds[row][i] = rotatedLeft(b, 8 * row);
        }
    }
    return tables;
}

inline constexpr Tables kTables = makeTables();

// The byte of a row in a column.
constexpr std::uint8_t rowOf(std::uint32_t column, unsigned row) {
    return static_cast<std::uint8_t>(column >> (8 * row));
}

constexpr std::uint32_t substituted(std::uint32_t column) {
    std::uint32_t result = 0;
    for (unsigned row = 0; row < 4; ++row)
        result |= std::uint32_t{kTables.forward[rowOf(column, row)]} << (8 * row);
    return result;
}

}  // namespace Tovra::Utils::AES

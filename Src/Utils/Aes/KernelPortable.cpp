// The AES kernel for any processor: a round is sixteen table look-ups.
#define FUNDO_AES_TARGET
#include "Utils/Aes/KernelModes.h"
#include "Utils/Aes/Tables.h"
#include "Utils/ByteOrder.h"

namespace Tovra::Utils::AES {
namespace {

struct Portable {
    static constexpr std::size_t kBlocks = 1;
    static constexpr std::size_t kFlight = 2;
    static constexpr bool kInRow = false;

    struct Vec {
        std::uint32_t w[4];  // the columns, first byte lowest
    };
    struct Counter {
        std::uint64_t high, low;
    };

    static FUNDO_AES_INLINE Vec load(const std::uint8_t* p) {
        return {{loadLittle32(p), loadLittle32(p + 4), loadLittle32(p + 8), loadLittle32(p + 12)}};
    }
    static FUNDO_AES_INLINE void store(std::uint8_t* p, const Vec& x) {
        for (std::size_t i = 0; i < 4; ++i)
            storeLittle32(p + 4 * i, x.w[i]);
    }
    static FUNDO_AES_INLINE Vec key(const Schedule& schedule, int round) { return load(schedule.key(round)); }
    static FUNDO_AES_INLINE Vec mix(const Vec& a, const Vec& b) {
        return {{a.w[0] ^ b.w[0], a.w[1] ^ b.w[1], a.w[2] ^ b.w[2], a.w[3] ^ b.w[3]}};
    }

    // Row r of column i comes from column i + r, in the inverse cipher from column i - r.
    template <bool Inverse>
    static FUNDO_AES_INLINE std::uint8_t shifted(const Vec& x, std::size_t column, unsigned row) {
        return rowOf(x.w[(Inverse ? column + 4 - row : column + row) & 3], row);
    }
    template <bool Inverse>
    static FUNDO_AES_INLINE Vec round(const Vec& x, const Vec& key) {
        constexpr auto& t = Inverse ? kTables.reverseRounds : kTables.forwardRounds;
        Vec y = key;
        for (std::size_t i = 0; i < 4; ++i) {
            y.w[i] ^= t[0][shifted<Inverse>(x, i, 0)] ^ t[1][shifted<Inverse>(x, i, 1)] ^
                      t[2][shifted<Inverse>(x, i, 2)] ^ t[3][shifted<Inverse>(x, i, 3)];
        }
        return y;
    }
    template <bool Inverse>
    static FUNDO_AES_INLINE Vec lastRound(const Vec& x, const Vec& key) {
        constexpr auto& box = Inverse ? kTables.reverse : kTables.forward;
        Vec y = key;
        for (std::size_t i = 0; i < 4; ++i) {
            for (unsigned row = 0; row < 4; ++row)
                y.w[i] ^= std::uint32_t{box[shifted<Inverse>(x, i, row)]} << (8 * row);
        }
        return y;
    }

    static FUNDO_AES_INLINE Vec loadLast(const std::uint8_t* chain) { return load(chain); }
    static FUNDO_AES_INLINE void storeLast(std::uint8_t* chain, const Vec& last) { store(chain, last); }
    static FUNDO_AES_INLINE Vec shiftIn(const Vec& last, const Vec&) { return last; }

    static FUNDO_AES_INLINE Counter loadCounter(const std::uint8_t* chain) {
        return {loadBig64(chain), loadBig64(chain + 8)};
    }
    static FUNDO_AES_INLINE void storeCounter(std::uint8_t* chain, const Counter& counter) {
        storeBig64(chain, counter.high);
        storeBig64(chain + 8, counter.low);
    }
    static FUNDO_AES_INLINE Counter advanced(const Counter& counter, std::size_t n) {
        return {counter.high, counter.low + n};
    }
    static FUNDO_AES_INLINE Vec counterBlocks(const Counter& counter, std::size_t i) {
        const Counter c = advanced(counter, i);
        return {{column(c.high >> 32), column(c.high), column(c.low >> 32), column(c.low)}};
    }

    static FUNDO_AES_INLINE Vec fromByte(std::uint8_t byte) { return {{byte, 0, 0, 0}}; }
    static FUNDO_AES_INLINE std::uint8_t firstByte(const Vec& x) { return rowOf(x.w[0], 0); }
    // Drops the first byte of the window and appends the first byte of x.
    static FUNDO_AES_INLINE Vec pushed(const Vec& window, const Vec& x) {
        const std::uint32_t next[4] = {window.w[1], window.w[2], window.w[3], x.w[0]};
        Vec y;
        for (std::size_t i = 0; i < 4; ++i)
            y.w[i] = window.w[i] >> 8 | next[i] << 24;
        return y;
    }

private:
    // The four big-endian bytes of the lower half of x.
    static FUNDO_AES_INLINE std::uint32_t column(std::uint64_t x) {
        return __builtin_bswap32(static_cast<std::uint32_t>(x));
    }
};

}  // namespace

constexpr Kernel kPortableKernel = makeKernel<Portable>("portable");

}  // namespace Tovra::Utils::AES

// The public checksums, and the portable kernel.
//
// Advancing a register over a byte is one look-up, but each waits for the one before. Over a word of eight
// bytes the look-ups are independent, each byte having a table that already takes it past the bytes behind
// it. The kernel goes on from there and runs kStreams words side by side:
//
//     data      w0 w1 w2 w3 | w0 w1 w2 w3 | ...
//     stream 0  ^^            ^^                  its register jumps over the words of the other streams
//     stream 1     ^^            ^^
//
// A register belongs in front of its stream's next word, so at the last group the words are taken in order,
// each with the register of its stream and that of the word before it.
#include "Utils/Crc.h"

#include "Utils/ByteOrder.h"
#include "Utils/Crc/CrcKernels.h"

namespace Tovra::Utils {
namespace Crc {
namespace {

constexpr size_t kWord = 8;
constexpr size_t kStreams = 5;
constexpr size_t kGroup = kWord * kStreams;

// Look-ups of a word: at[i][b] is what byte i contributes, having the value b.
struct WordTable {
    uint32_t at[kWord][256];
};

constexpr uint32_t overZeroByte(uint32_t crc, uint32_t polynomial) {
    for (int bit = 0; bit < 8; ++bit)
        crc = (crc >> 1) ^ ((crc & 1u) != 0 ? polynomial : 0);
    return crc;
}

// The table that takes a register over its word and some bytes more.
constexpr WordTable makeTable(uint32_t polynomial, size_t more) {
    WordTable table{};
    for (uint32_t value = 0; value < 256; ++value) {
        uint32_t crc = overZeroByte(value, polynomial);
        for (size_t i = 0; i < more; ++i)
            crc = overZeroByte(crc, polynomial);
        for (size_t i = kWord; i-- > 0;) {
            table.at[i][value] = crc;
            crc = overZeroByte(crc, polynomial);
        }
    }
    return table;
}

template <uint32_t Polynomial>
constexpr WordTable kNext = makeTable(Polynomial, 0);
template <uint32_t Polynomial>
constexpr WordTable kJump = makeTable(Polynomial, kGroup - kWord);

inline uint32_t overWord(const WordTable& table, uint64_t word) {
    uint32_t crc = 0;
    for (size_t i = 0; i < kWord; ++i)
        crc ^= table.at[i][(word >> (8 * i)) & 0xFF];
    return crc;
}

}  // namespace

template <uint32_t Polynomial>
uint32_t updatePortable(uint32_t crc, const uint8_t* data, size_t length) {
    constexpr const WordTable& next = kNext<Polynomial>;
    if (length >= 2 * kGroup) {
        uint32_t stream[kStreams] = {crc};
        for (; length >= 2 * kGroup; data += kGroup, length -= kGroup) {
            for (size_t i = 0; i < kStreams; ++i)
                stream[i] = overWord(kJump<Polynomial>, loadLittle64(data + kWord * i) ^ stream[i]);
        }
        crc = 0;
        for (size_t i = 0; i < kStreams; ++i)
            crc = overWord(next, loadLittle64(data + kWord * i) ^ stream[i] ^ crc);
        data += kGroup;
        length -= kGroup;
    }
    for (; length >= kWord; data += kWord, length -= kWord)
        crc = overWord(next, loadLittle64(data) ^ crc);
    for (; length != 0; ++data, --length)
        crc = (crc >> 8) ^ next.at[kWord - 1][(crc ^ *data) & 0xFF];
    return crc;
}

template <uint32_t Polynomial>
Update kernelFor(size_t length) {
#if FUNDO_X86_64
    if (length >= 256 && Cpu::has(Cpu::kVclmul512 | Cpu::kClmul)) return updateVector<Polynomial>;
    if (length >= 64 && Cpu::has(Cpu::kClmul)) return updateClmul<Polynomial>;
#else
    static_cast<void>(length);
#endif
    return updatePortable<Polynomial>;
}

template uint32_t updatePortable<kIeee32>(uint32_t, const uint8_t*, size_t);
template uint32_t updatePortable<kAnsi16>(uint32_t, const uint8_t*, size_t);
template Update kernelFor<kIeee32>(size_t);
template Update kernelFor<kAnsi16>(size_t);

}  // namespace Crc

unsigned short crc16(unsigned short seed, const unsigned char* data, size_t length) {
    return static_cast<unsigned short>(Crc::kernelFor<Crc::kAnsi16>(length)(seed, data, length));
}

unsigned int crc32(const unsigned char* data, size_t length) { return crc32(0u, data, length); }

unsigned int crc32(unsigned int seed, const unsigned char* data, size_t length) {
    return ~Crc::kernelFor<Crc::kIeee32>(length)(~seed, data, length);
}

}  // namespace Tovra::Utils

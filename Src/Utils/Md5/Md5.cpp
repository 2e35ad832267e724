// MD5 of RFC 1321.
//
// Every step waits for the one before, so its time is the length of that chain. The round functions are
// written for the operand that comes last, the register b of the step before: what does not need it is summed
// up front.
#include "Utils/Md5.h"

#include <utility>

#include "Fundo3/Report.h"
#include "Utils/BlockFeed.h"
#include "Utils/ByteOrder.h"
#include "Utils/Hex.h"

namespace Tovra::Utils {

static constexpr char kSource[] = "Src/Utils/Md5";

namespace {

constexpr size_t kDigest = 16;

struct MD5_CTX {
    uint32_t state[4];
    uint32_t count[2];  // bits, the low word first
    uint8_t buffer[kBlock];
};

constexpr uint32_t kStart[4] = {0x67452301u, 0xefcdab89u, 0x98badcfeu, 0x10325476u};

// The integer part of 2^32 * abs(sin(i + 1)).
constexpr uint32_t kSines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

// By round: the shifts of four steps in turn, and which word a step takes: first + step * stride modulo 16.
constexpr unsigned kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
constexpr size_t kFirstWord[4] = {0, 1, 5, 0};
constexpr size_t kWordStride[4] = {1, 5, 3, 7};

template <size_t Step>
__attribute__((always_inline)) inline void step(uint32_t (&r)[4], const uint8_t* block) {
    constexpr size_t kRound = Step / 16;
    constexpr unsigned kShift = kShifts[kRound][Step % 4];
    uint32_t& a = r[(64 - Step) % 4];
    const uint32_t b = r[(65 - Step) % 4], c = r[(66 - Step) % 4], d = r[(67 - Step) % 4];
    a += kSines[Step] + loadLittle32(block + 4 * ((kFirstWord[kRound] + Step * kWordStride[kRound]) % 16));
    if (kRound == 0) a += d ^ (b & (c ^ d));
    if (kRound == 1) {
        a += c & ~d;
        a += b & d;  // no bit of both terms is set, so the sum is their union
    }
    if (kRound == 2) a += b ^ (c ^ d);
    if (kRound == 3) a += c ^ (b | ~d);
    a = (a << kShift | a >> (32 - kShift)) + b;
}

template <size_t... Steps>
__attribute__((always_inline)) inline void allSteps(uint32_t (&r)[4], const uint8_t* block,
                                                    std::index_sequence<Steps...>) {
    (step<Steps>(r, block), ...);
}

void MD5Transform(uint32_t (&state)[4], const uint8_t* data, size_t blocks) {
    for (; blocks != 0; --blocks, data += kBlock) {
        uint32_t r[4] = {state[0], state[1], state[2], state[3]};
        allSteps(r, data, std::make_index_sequence<64>());
        for (size_t i = 0; i < 4; ++i)
            state[i] += r[i];
    }
}

size_t waiting(const MD5_CTX& ctx) { return ctx.count[0] / 8 % kBlock; }

void MD5_Update(MD5_CTX* ctx, const unsigned char* data, unsigned int length) {
    const size_t before = waiting(*ctx);
    ctx->count[0] += length << 3;
    ctx->count[1] += (length >> 29) + (ctx->count[0] < length << 3 ? 1 : 0);
    feedBlocks(ctx->buffer, before, data, length,
               [ctx](const uint8_t* blocks, size_t count) { MD5Transform(ctx->state, blocks, count); });
}

void MD5_Final(unsigned char* digest, MD5_CTX* ctx) {
    uint8_t length[8];
    storeLittle32(length, ctx->count[0]);
    storeLittle32(length + 4, ctx->count[1]);
    padBlocks(ctx->buffer, waiting(*ctx), length,
              [ctx](const uint8_t* blocks, size_t count) { MD5Transform(ctx->state, blocks, count); });
    for (size_t i = 0; i < 4; ++i)
        storeLittle32(digest + 4 * i, ctx->state[i]);
}

}  // namespace

struct Md5Internal {
    MD5_CTX context;
    uint8_t digest[kDigest];
    bool finished;
};

CMd5::CMd5() : m_internal(new Md5Internal()) { init(); }

CMd5::~CMd5() { delete m_internal; }

void CMd5::init() {
    *m_internal = Md5Internal();
    std::copy_n(kStart, 4, m_internal->context.state);
}

void CMd5::update(const unsigned char* data, size_t length) {
    if (data == nullptr || length == 0) return;
    if (m_internal->finished) init();
    // Contract: lengths have 32 bits below this line.
    MD5_Update(&m_internal->context, data, static_cast<unsigned>(length));
}

void CMd5::finish() {
    if (m_internal->finished) return;
    MD5_Final(m_internal->digest, &m_internal->context);
    m_internal->finished = true;
}

void CMd5::final(unsigned char* digest) {
    if (digest == nullptr) {
        FUNDO_REPORT(Fundo::Detail::kError, "digest is NULL\n");
        return;
    }
    finish();
    std::copy_n(m_internal->digest, kDigest, digest);
}

void CMd5::hex(char* text) {
    if (text == nullptr) {
        FUNDO_REPORT(Fundo::Detail::kError, "hash is NULL\n");
        return;
    }
    finish();
    toHex(text, m_internal->digest, kDigest);
}

}  // namespace Tovra::Utils

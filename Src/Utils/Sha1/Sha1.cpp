// The plain SHA-1 functions and the class on top of them.
#include "Utils/Sha1.h"

#include "Fundo3/Report.h"
#include "Utils/BlockFeed.h"
#include "Utils/ByteOrder.h"
#include "Utils/Hex.h"
#include "Utils/Sha1/Sha1Kernels.h"

void SHA1Init(SHA1_CTX* ctx) {
    constexpr uint32_t kStart[5] = {0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u, 0xC3D2E1F0u};
    ctx->count = 0;
    ctx->bufferLength = 0;
    std::copy_n(kStart, 5, ctx->state);
}

void SHA1Update(SHA1_CTX* ctx, const unsigned char* data, unsigned int length) {
    using namespace Tovra::Utils;
    ctx->count += uint64_t{length} * 8;
    ctx->bufferLength = static_cast<uint32_t>(feedBlocks(
        ctx->buffer, ctx->bufferLength, data, length,
        [ctx](const uint8_t* blocks, size_t count) { Sha1::kernel()(ctx->state, blocks, count); }));
}

void SHA1Final(SHA1_CTX* ctx, unsigned char* digest) {
    using namespace Tovra::Utils;
    uint8_t length[8];
    storeBig32(length, static_cast<uint32_t>(ctx->count >> 32));
    storeBig32(length + 4, static_cast<uint32_t>(ctx->count));
    padBlocks(ctx->buffer, ctx->bufferLength, length,
              [ctx](const uint8_t* blocks, size_t count) { Sha1::kernel()(ctx->state, blocks, count); });
    ctx->bufferLength = 0;
    if (digest == nullptr) return;
    for (size_t i = 0; i < 5; ++i)
        storeBig32(digest + 4 * i, ctx->state[i]);
}

namespace Tovra::Utils {

static constexpr char kSource[] = "Src/Utils/Sha1";

namespace {

constexpr size_t kDigest = 20;

}  // namespace

struct Sha1Internal {
    SHA1_CTX context;
    uint8_t digest[kDigest];
    bool finished;
};

CSha1::CSha1() : m_internal(new Sha1Internal()) { SHA1Init(&m_internal->context); }

CSha1::~CSha1() { delete m_internal; }

void CSha1::update(const unsigned char* data, size_t length) {
    if (data == nullptr || length == 0) return;
    if (m_internal->finished) {
        *m_internal = Sha1Internal();
        SHA1Init(&m_internal->context);
    }
    // Contract: lengths have 32 bits below this line.
    SHA1Update(&m_internal->context, data, static_cast<unsigned>(length));
}

void CSha1::finish() {
    if (m_internal->finished) return;
    SHA1Final(&m_internal->context, m_internal->digest);
    m_internal->finished = true;
}

void CSha1::final(unsigned char* digest, size_t length) {
    if (digest == nullptr) {
        FUNDO_REPORT(Fundo::Detail::kError, "hash is NULL!\n");
        return;
    }
    if (length < kDigest) {
        FUNDO_REPORT(Fundo::Detail::kError, "len(%u) is invalid!\n", static_cast<unsigned>(length));
        return;
    }
    finish();
    std::copy_n(m_internal->digest, kDigest, digest);
}

void CSha1::hex(char* text, size_t length) {
    if (text == nullptr) {
        FUNDO_REPORT(Fundo::Detail::kError, "str is NULL!\n");
        return;
    }
    if (length < 2 * kDigest) {
        FUNDO_REPORT(Fundo::Detail::kError, "len(%u) is invalid!\n", static_cast<unsigned>(length));
        return;
    }
    finish();
    toHex(text, m_internal->digest, kDigest);
    if (length > 2 * kDigest) text[2 * kDigest] = '\0';
}

}  // namespace Tovra::Utils

// The modes of the plain module: whole blocks go to a kernel, the ends of the stream modes byte by byte.
#include <algorithm>
#include <cstring>

#include "Utils/Aes/Kernel.h"
#include "Utils/ByteOrder.h"

namespace Tovra::Utils::AES {
namespace {

constexpr int kEncrypting = 1;

// Kept out of line: inlined, the ends of a stream cost calls of whole blocks their registers.
#define FUNDO_RARE __attribute__((noinline))

// blocks tells how many do not wait for one another.
void run(const aes_context* ctx, Operation operation, size_t blocks, const unsigned char* in,
         unsigned char* out, size_t count, unsigned char* chain) {
    kernelFor(blocks).run[operation](Schedule(*ctx), in, out, count, chain);
}

bool isWhole(size_t length) { return length % kBlockSize == 0; }

void mixBlock(unsigned char* block, const unsigned char* other) {
    std::uint64_t x[2], y[2];
    std::memcpy(x, block, kBlockSize);
    std::memcpy(y, other, kBlockSize);
    for (size_t i = 0; i < 2; ++i)
        x[i] ^= y[i];
    std::memcpy(block, x, kBlockSize);
}

// A mode of any length over blocks. n bytes of the current block are used up when a call begins: it ends the
// block, passes whole blocks on and begins another.
template <class Mode>
int stream(Mode&& mode, size_t length, size_t* offset, const unsigned char* in, unsigned char* out) {
    if (*offset != 0 && length != 0) {
        const size_t head = std::min(length, kBlockSize - *offset);
        mode.bytes(*offset, in, out, head);
        *offset = (*offset + head) % kBlockSize;
        in += head;
        out += head;
        length -= head;
    }
    const size_t whole = length / kBlockSize;
    if (whole != 0) mode.blocks(in, out, whole);
    const size_t tail = length % kBlockSize;
    if (tail != 0) {
        mode.nextBlock();
        mode.bytes(0, in + whole * kBlockSize, out + whole * kBlockSize, tail);
        *offset = tail;
    }
    return 0;
}

struct Cfb128 {
    const aes_context* ctx;
    bool encrypting;
    unsigned char* iv;

    FUNDO_RARE void nextBlock() { run(ctx, kEcbEncrypt, 1, iv, iv, 1, nullptr); }
    FUNDO_RARE void bytes(size_t n, const unsigned char* in, unsigned char* out, size_t length) {
        for (size_t i = 0; i < length; ++i) {
            const unsigned char before = in[i];
            out[i] = before ^ iv[n + i];
            iv[n + i] = encrypting ? out[i] : before;
        }
    }
    void blocks(const unsigned char* in, unsigned char* out, size_t count) {
        if (encrypting) return run(ctx, kCfb128Encrypt, 1, in, out, count, iv);
        run(ctx, kCfb128Decrypt, count, in, out, count, iv);
    }
};

struct Ctr {
    const aes_context* ctx;
    unsigned char* counter;
    unsigned char* streamBlock;

    // Mixes in the key stream of as many counters, at least one, as come before the next carry into the upper
    // half. The low half is the kernel's to store: half a store would hold up the next load of the whole.
    size_t untilCarry(const unsigned char* in, unsigned char* out, size_t count) {
        const std::uint64_t low = loadBig64(counter + 8);
        count = static_cast<size_t>(std::min<std::uint64_t>(count - 1, ~low)) + 1;
        run(ctx, kCtr, count, in, out, count, counter);
        if (low + count == 0) storeBig64(counter, loadBig64(counter) + 1);
        return count;
    }

    // The next carry is 2^64 blocks away.
    FUNDO_RARE void afterCarry(const unsigned char* in, unsigned char* out, size_t count) {
        untilCarry(in, out, count);
    }

    FUNDO_RARE void nextBlock() {
        std::memset(streamBlock, 0, kBlockSize);
        untilCarry(streamBlock, streamBlock, 1);
    }
    FUNDO_RARE void bytes(size_t n, const unsigned char* in, unsigned char* out, size_t length) {
        for (size_t i = 0; i < length; ++i)
            out[i] = in[i] ^ streamBlock[n + i];
    }
    void blocks(const unsigned char* in, unsigned char* out, size_t count) {
        const size_t last = (count - 1) * kBlockSize;
        std::memcpy(streamBlock, in + last, kBlockSize);
        const size_t done = untilCarry(in, out, count);
        if (done != count) afterCarry(in + done * kBlockSize, out + done * kBlockSize, count - done);
        mixBlock(streamBlock, out + last);
    }
};

}  // namespace

void aes_encrypt(aes_context* ctx, const unsigned char in[16], unsigned char out[16]) {
    kPortableKernel.run[kEcbEncrypt](Schedule(*ctx), in, out, 1, nullptr);
}

void aes_decrypt(aes_context* ctx, const unsigned char in[16], unsigned char out[16]) {
    kPortableKernel.run[kEcbDecrypt](Schedule(*ctx), in, out, 1, nullptr);
}

int aes_crypt_ecb_block(aes_context* ctx, int mode, const unsigned char* in, unsigned char* out) {
    return aes_crypt_ecb(ctx, mode, kBlockSize, in, out);
}

int aesni_crypt_ecb(aes_context* ctx, int mode, const unsigned char* in, unsigned char* out) {
    return aes_crypt_ecb(ctx, mode, kBlockSize, in, out);
}

int aes_crypt_ecb(aes_context* ctx, int mode, size_t length, const unsigned char* in, unsigned char* out) {
    if (!isWhole(length)) return -1;
    const size_t blocks = length / kBlockSize;
    run(ctx, mode == kEncrypting ? kEcbEncrypt : kEcbDecrypt, blocks, in, out, blocks, nullptr);
    return 0;
}

int aes_crypt_cbc(aes_context* ctx, int mode, size_t length, unsigned char iv[16], const unsigned char* in,
                  unsigned char* out) {
    if (!isWhole(length)) return -1;
    const size_t blocks = length / kBlockSize;
    if (mode == kEncrypting)
        run(ctx, kCbcEncrypt, 1, in, out, blocks, iv);
    else
        run(ctx, kCbcDecrypt, blocks, in, out, blocks, iv);
    return 0;
}

int aes_crypt_cfb128(aes_context* ctx, int mode, size_t length, size_t* ivOffset, unsigned char iv[16],
                     const unsigned char* in, unsigned char* out) {
    return stream(Cfb128{ctx, mode == kEncrypting, iv}, length, ivOffset, in, out);
}

int aes_crypt_cfb8(aes_context* ctx, int mode, size_t length, unsigned char iv[16], const unsigned char* in,
                   unsigned char* out) {
    run(ctx, mode == kEncrypting ? kCfb8Encrypt : kCfb8Decrypt, 1, in, out, length, iv);
    return 0;
}

int aes_crypt_ctr(aes_context* ctx, size_t length, size_t* counterOffset, unsigned char counter[16],
                  unsigned char streamBlock[16], const unsigned char* in, unsigned char* out) {
    return stream(Ctr{ctx, counter, streamBlock}, length, counterOffset, in, out);
}

int aesni_has_support(unsigned int what) { return (Cpu::basicWord() & what) != 0 ? 1 : 0; }

}  // namespace Tovra::Utils::AES

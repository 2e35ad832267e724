// The modes of the plain module: whole blocks go to a kernel, the ends of the stream modes byte by byte.
#include <algorithm>
#include <cstring>

#include "Utils/Aes/Kernel.h"
#include "Utils/Aes/Words.h"

namespace Tovra::Utils::AES {
namespace {

constexpr int kEncrypting = 1;

// blocks tells how many do not wait for one another.
void run(const aes_context* ctx, Operation operation, size_t blocks, const unsigned char* in,
         unsigned char* out, size_t count, unsigned char* chain) {
    kernelFor(blocks).run[operation](Schedule(*ctx), in, out, count, chain);
}

bool isWhole(size_t length) { return length % kBlockSize == 0; }

// A mode of any length over blocks. n bytes of the current block are used up when a call begins: it ends the
// block, passes whole blocks on and begins another.
template <class Mode>
int stream(Mode&& mode, size_t length, size_t* offset, const unsigned char* in, unsigned char* out) {
    size_t n = *offset;
    const size_t head = n == 0 ? 0 : std::min(length, kBlockSize - n);
    mode.bytes(n, in, out, head);
    n = (n + head) % kBlockSize;
    const size_t whole = (length - head) / kBlockSize;
    if (whole != 0) mode.blocks(in + head, out + head, whole);
    const size_t done = head + whole * kBlockSize;
    if (done != length) {
        mode.nextBlock();
        mode.bytes(0, in + done, out + done, length - done);
        n = length - done;
    }
    *offset = n;
    return 0;
}

struct Cfb128 {
    const aes_context* ctx;
    bool encrypting;
    unsigned char* iv;

    void nextBlock() { run(ctx, kEcbEncrypt, 1, iv, iv, 1, nullptr); }
    void bytes(size_t n, const unsigned char* in, unsigned char* out, size_t length) {
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

    // The next so many counters, at least one, without a carry into the upper half before the last of them.
    template <class Use>
    size_t take(size_t count, Use use) {
        const std::uint64_t low = loadBigEndian(counter + 8);
        if (low != 0) count = static_cast<size_t>(std::min<std::uint64_t>(count, 0 - low));
        use(count);
        storeBigEndian(counter + 8, low + count);
        if (low + count == 0) storeBigEndian(counter, loadBigEndian(counter) + 1);
        return count;
    }

    void nextBlock() {
        take(1, [this](size_t) { run(ctx, kEcbEncrypt, 1, counter, streamBlock, 1, nullptr); });
    }
    void bytes(size_t n, const unsigned char* in, unsigned char* out, size_t length) {
        for (size_t i = 0; i < length; ++i)
            out[i] = in[i] ^ streamBlock[n + i];
    }
    void blocks(const unsigned char* in, unsigned char* out, size_t count) {
        const size_t last = (count - 1) * kBlockSize;
        std::memcpy(streamBlock, in + last, kBlockSize);
        for (size_t done = 0; done < count;) {
            done += take(count - done, [&](size_t part) {
                run(ctx, kCtr, part, in + done * kBlockSize, out + done * kBlockSize, part, counter);
            });
        }
        for (size_t i = 0; i < kBlockSize; ++i)
            streamBlock[i] ^= out[last + i];
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

// CAes against published vectors and OpenSSL, by every path through the processor.
#include "Utils/Aes.h"

#include <openssl/evp.h>

#include <algorithm>
#include <memory>
#include <new>

#include "Aes/Paths.h"
#include "Support/GuardedBuffer.h"
#include "Support/LogCapture.h"
#include "Support/Random.h"
#include "Utils/Aes/AesInternal.h"

using namespace Tests;
using Tovra::Utils::CAes;
namespace AES = Tovra::Utils::AES;

namespace {

constexpr CAes::EncMode kModes[] = {CAes::ECB, CAes::CBC, CAes::CFB8, CAes::CFB128, CAes::CTR};

constexpr char kCounting[] = "00112233445566778899aabbccddeeff";
constexpr char kPlain[] =
    "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
    "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710";
constexpr char kKey128[] = "2b7e151628aed2a6abf7158809cf4f3c";
constexpr char kKey256[] = "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4";
constexpr char kIv[] = "000102030405060708090a0b0c0d0e0f";
constexpr char kCounter[] = "f0f1f2f3f4f5f6f7f8f9fafbfcfdfeff";

struct Vector {
    const char* source;
    CAes::EncMode mode;
    const char *key, *iv, *plain, *cipher;
};

const Vector kVectors[] = {
    {"FIPS 197 C.1", CAes::ECB, "000102030405060708090a0b0c0d0e0f", kIv, kCounting,
     "69c4e0d86a7b0430d8cdb78070b4c55a"},
    {"FIPS 197 C.2", CAes::ECB, "000102030405060708090a0b0c0d0e0f1011121314151617", kIv, kCounting,
     "dda97ca4864cdfe06eaf70a0ec0d7191"},
    {"FIPS 197 C.3", CAes::ECB, "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f", kIv,
     kCounting, "8ea2b7ca516745bfeafc49904b496089"},
    {"SP 800-38A F.2.1", CAes::CBC, kKey128, kIv, kPlain,
     "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
     "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
    {"SP 800-38A F.3.7", CAes::CFB8, kKey128, kIv, "6bc1bee22e409f96e93d7e117393172aae2d",
     "3b79424c9c0dd436bace9e0ed4586a4f32b9"},
    {"SP 800-38A F.3.13", CAes::CFB128, kKey128, kIv, kPlain,
     "3b3fd92eb72dad20333449f8e83cfb4ac8a64537a0b3a93fcde3cdad9f1ce58b"
     "26751f67a3cbb140b1808cf187a4f4dfc04b05357c5d1c0eeac4c66f9ff7f2e6"},
    {"SP 800-38A F.5.1", CAes::CTR, kKey128, kCounter, kPlain,
     "874d6191b620e3261bef6864990db6ce9806f66b7970fdff8617187bb9fffdff"
     "5ae4df3edbd5d35e5b4f09020db03eab1e031dda2fbe03d1792170a0f3009cee"},
};

CAes::KeyBits bitsOf(const Bytes& key) { return static_cast<CAes::KeyBits>(8 * key.size()); }

TEST(Aes, PublishedVectorsHoldOnEachPath) {
    onEachPath([] {
        for (const Vector& vector : kVectors) {
            SCOPED_TRACE(vector.source);
            const Bytes key = fromHex(vector.key), iv = fromHex(vector.iv), plain = fromHex(vector.plain);
            Bytes out = plain;
            CAes forward(vector.mode, key.data(), bitsOf(key), iv.data()),
                backward(vector.mode, key.data(), bitsOf(key), iv.data());
            ASSERT_TRUE(forward.encrypt(out.data(), out.data(), out.size()));
            ASSERT_EQ(out, fromHex(vector.cipher));
            ASSERT_TRUE(backward.decrypt(out.data(), out.data(), out.size()));
            ASSERT_EQ(out, plain);
        }
    });
}

Bytes peer(CAes::EncMode mode, bool encrypting, const Bytes& key, const Bytes& iv, const Bytes& in) {
    static const char* const s_names[] = {"ECB", "CBC", "CFB8", "CFB", "CTR"};
    const std::string name = "AES-" + std::to_string(8 * key.size()) + "-" + s_names[mode];
    const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> ctx(EVP_CIPHER_CTX_new(),
                                                                         EVP_CIPHER_CTX_free);
    EVP_CipherInit_ex(ctx.get(), EVP_get_cipherbyname(name.c_str()), nullptr, key.data(), iv.data(),
                      encrypting);
    EVP_CIPHER_CTX_set_padding(ctx.get(), 0);
    Bytes out(in.size());
    int size = 0;
    EVP_CipherUpdate(ctx.get(), out.data(), &size, in.data(), static_cast<int>(in.size()));
    EXPECT_EQ(static_cast<size_t>(size), in.size());
    return out;
}

class AesRandom : public ::testing::Test {
protected:
    size_t below(size_t limit) { return m_random() % limit; }

    Bytes bytes(size_t size) {
        Bytes result(size);
        for (std::uint8_t& byte : result)
            byte = static_cast<std::uint8_t>(m_random());
        return result;
    }

    // Initial vectors too whose counters soon carry, into the upper half or all the way around.
    Bytes iv() {
        Bytes result = bytes(16);
        const size_t from = below(3) * 8;
        for (size_t i = from; i < 16 && from != 16; ++i)
            result[i] = 0xff;
        if (from != 16) result[15] = static_cast<std::uint8_t>(0xff - below(60));
        return result;
    }

    // Runs the stream by calls of random lengths.
    void runSplit(CAes& aes, bool encrypting, size_t unit, std::uint8_t* out, const std::uint8_t* in,
                  size_t size) {
        const size_t longest = 1 + below(size / unit + 1);
        for (size_t done = 0, length; done < size; done += length) {
            length = std::min(size - done, unit * below(longest + 1));
            ASSERT_TRUE((aes.*(encrypting ? &CAes::encrypt : &CAes::decrypt))(out + done, in + done, length));
        }
    }

    Support::Random m_random;
};

TEST_F(AesRandom, StreamsSplitAnyhowAreThoseOfThePeer) {
    onEachPath([this] {
        for (int turn = 0; turn < 1500; ++turn) {
            const CAes::EncMode mode = kModes[below(5)];
            const bool encrypting = below(2) == 0;
            const size_t unit = mode <= CAes::CBC ? 16 : 1;
            const size_t size = (below(8) == 0 ? 4096 : below(2000)) / unit * unit;
            const Bytes key = bytes(16 + 8 * below(3)), start = iv(), in = bytes(size);
            SCOPED_TRACE(::testing::Message()
                         << mode << " " << encrypting << " " << key.size() << " " << size);
            // The end, and of a page's length the start, lie against inaccessible memory.
            const CGuardedBuffer source(in.data(), size), target(size);
            std::uint8_t* out = below(2) == 0 ? source.data() : target.data();
            CAes aes(mode, key.data(), bitsOf(key), start.data());
            ASSERT_NO_FATAL_FAILURE(runSplit(aes, encrypting, unit, out, source.data(), size));
            ASSERT_EQ(Bytes(out, out + size), peer(mode, encrypting, key, start, in));
        }
    });
}

// All that a mode of the plain module keeps between calls.
struct State {
    Bytes chain, stream = Bytes(16);
    size_t offset = 0;

    auto all() const { return std::tie(chain, stream, offset); }

    void run(CAes::EncMode mode, int direction, AES::aes_context& ctx, std::uint8_t* data, size_t length) {
        if (mode == CAes::CFB8)
            AES::aes_crypt_cfb8(&ctx, direction, length, chain.data(), data, data);
        else if (mode == CAes::CFB128)
            AES::aes_crypt_cfb128(&ctx, direction, length, &offset, chain.data(), data, data);
        else
            AES::aes_crypt_ctr(&ctx, length, &offset, chain.data(), stream.data(), data, data);
    }
};

TEST_F(AesRandom, StateAfterALongCallIsThatAfterSingleBytes) {
    onEachPath([this] {
        for (int turn = 0; turn < 300; ++turn) {
            const CAes::EncMode mode = kModes[2 + below(3)];
            const int direction = static_cast<int>(below(2));
            AES::aes_context ctx;
            ASSERT_EQ(AES::aes_setkey_enc(&ctx, bytes(32).data(), 256), 0);
            State whole{iv()}, single = whole;
            Bytes data = bytes(1 + below(1500)), copy = data;
            const size_t first = below(data.size());
            whole.run(mode, direction, ctx, data.data(), first);
            whole.run(mode, direction, ctx, data.data() + first, data.size() - first);
            for (std::uint8_t& byte : copy)
                single.run(mode, direction, ctx, &byte, 1);
            ASSERT_EQ(data, copy);
            ASSERT_TRUE(whole.all() == single.all()) << "mode " << mode << ", " << data.size() << " bytes";
        }
    });
}

TEST(Aes, RefusedLengthsLeaveOutputAndChainAlone) {
    const Bytes key(16, 1), in(48, 2);
    for (const CAes::EncMode mode : {CAes::ECB, CAes::CBC}) {
        CAes aes(mode, key.data(), CAes::Key128, nullptr);
        Bytes out(48, 7);
        EXPECT_TRUE(aes.encrypt(nullptr, nullptr, 0));
        for (const size_t length : {1U, 15U, 47U}) {
            EXPECT_FALSE(aes.encrypt(out.data(), in.data(), length));
            EXPECT_FALSE(aes.decrypt(out.data(), in.data(), length));
        }
        EXPECT_EQ(out, Bytes(48, 7));
        EXPECT_TRUE(aes.encrypt(out.data(), in.data(), 48));
        EXPECT_EQ(out, peer(mode, true, key, Bytes(16), in));
    }
}

TEST(Aes, WhatCannotBeMadeSaysSoAndRefusesEachCall) {
    static const char* const s_names[] = {"ECB", "CBC", "CFB8", "CFB128", "CTR"};
    const Bytes key(32);
    std::uint8_t block[16] = {};
    Support::LogCapture log(2);
    size_t refused = 0;
    const auto expectRefusals = [&](int mode, const std::uint8_t* given, int bits) {
        CAes aes(static_cast<CAes::EncMode>(mode), given, static_cast<CAes::KeyBits>(bits), nullptr);
        EXPECT_FALSE(aes.encrypt(block, block, 16));
        EXPECT_FALSE(aes.decrypt(block, block, 16));
        refused += 2;
        EXPECT_EQ(log.count("aes init failed.\n"), refused);
    };
    for (const CAes::EncMode mode : kModes) {
        expectRefusals(mode, nullptr, 128);
        EXPECT_EQ(log.count(std::string("Aes") + s_names[mode] + " key is NULL\n"), 1u);
        expectRefusals(mode, key.data(), 160);
    }
    expectRefusals(5, key.data(), 128);
    expectRefusals(-1, key.data(), 128);
    EXPECT_EQ(log.lines().size(), refused + 5);
}

template <class Mode>
void expectWiped() {
    const Bytes key = fromHex(kKey256), iv = fromHex(kCounter);
    AES::aes_context schedule;
    ASSERT_EQ(AES::aes_setkey_enc(&schedule, key.data(), 256), 0);
    const auto* lastKey = reinterpret_cast<const std::uint8_t*>(schedule.rk + 4 * schedule.nr);

    alignas(Mode) unsigned char storage[sizeof(Mode)] = {};
    const auto holds = [&storage](const std::uint8_t* secret) {
        return std::search(storage, std::end(storage), secret, secret + 16) != std::end(storage);
    };
    Mode* mode = new (storage) Mode(key.data(), 256, iv.data());
    EXPECT_TRUE(holds(key.data()) && holds(lastKey));
    mode->~Mode();
    EXPECT_FALSE(holds(key.data()) || holds(lastKey) || holds(iv.data()));
}

TEST(Aes, NoKeyStaysBehindInFreedMemory) {
    expectWiped<AES::CAesECB>();
    expectWiped<AES::CAesCBC>();
    expectWiped<AES::CAesCFB8>();
    expectWiped<AES::CAesCFB128>();
    expectWiped<AES::CAesCTR>();
}

}  // namespace

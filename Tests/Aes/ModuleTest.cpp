// The plain AES module: schedules, single blocks, what the processor has, and the field of GCM.
#include <algorithm>
#include <cstring>

#include "Aes/Paths.h"
#include "Support/Random.h"
#include "Utils/Aes.h"

using namespace Tests;
using namespace Tovra::Utils::AES;

namespace {

Bytes scheduleOf(const aes_context& ctx) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(ctx.rk);
    return Bytes(bytes, bytes + 16 * (static_cast<size_t>(ctx.nr) + 1));
}

TEST(AesModule, SchedulesOfOnePathServeTheOthers) {
    const Bytes key = fromHex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
    for (const unsigned bits : {128u, 192u, 256u}) {
        aes_context encrypting, decrypting;
        {
            const Cpu::CRestriction portable(Cpu::kPortable);
            ASSERT_EQ(aes_setkey_enc(&encrypting, key.data(), bits), 0);
            ASSERT_EQ(aes_setkey_dec(&decrypting, key.data(), bits), 0);
        }
        ASSERT_EQ(encrypting.nr, static_cast<int>(bits / 32 + 6));
        ASSERT_EQ(encrypting.rk, encrypting.buf);
        ASSERT_EQ(decrypting.rk, decrypting.buf);
        onEachPath([&] {
            aes_context again;
            ASSERT_EQ(aes_setkey_enc(&again, key.data(), bits), 0);
            EXPECT_EQ(scheduleOf(again), scheduleOf(encrypting));
            ASSERT_EQ(aes_setkey_dec(&again, key.data(), bits), 0);
            EXPECT_EQ(scheduleOf(again), scheduleOf(decrypting));

            Bytes block = key;
            aes_encrypt(&encrypting, block.data(), block.data());
            EXPECT_EQ(aesni_crypt_ecb(&decrypting, 0, block.data(), block.data()), 0);
            EXPECT_EQ(block, key);
            EXPECT_EQ(aes_crypt_ecb_block(&encrypting, 1, block.data(), block.data()), 0);
            aes_decrypt(&decrypting, block.data(), block.data());
            EXPECT_EQ(block, key);
        });
    }
}

TEST(AesModule, OtherKeyLengthsAreRefusedWithoutAChange) {
    const Bytes key(64, 1);
    aes_context ctx;
    aes_init(&ctx);
    for (const unsigned bits : {0u, 64u, 160u, 224u, 512u}) {
        EXPECT_EQ(aes_setkey_enc(&ctx, key.data(), bits), -1);
        EXPECT_EQ(aes_setkey_dec(&ctx, key.data(), bits), -1);
        EXPECT_EQ(aesni_setkey_enc(reinterpret_cast<unsigned char*>(&ctx), key.data(), bits), -1);
    }
    EXPECT_EQ(std::memcmp(&ctx, Bytes(sizeof ctx).data(), sizeof ctx), 0);
}

TEST(AesModule, NewAndFreedContextsAreZero) {
    for (const auto clear : {aes_init, aes_free}) {
        aes_context ctx;
        ASSERT_EQ(aes_setkey_enc(&ctx, Bytes(32, 5).data(), 256), 0);
        clear(&ctx);
        EXPECT_EQ(std::memcmp(&ctx, Bytes(sizeof ctx).data(), sizeof ctx), 0);
    }
    aes_free(nullptr);
}

TEST(AesModule, AsksTheProcessorForTheBitsOfItsFeatureWord) {
    constexpr unsigned kAesBit = 0x2000000, kClmulBit = 0x2;
    EXPECT_EQ(aesni_has_support(kAesBit) != 0, Cpu::has(Cpu::kAes));
    EXPECT_EQ(aesni_has_support(kClmulBit) != 0, Cpu::has(Cpu::kClmul));
    EXPECT_EQ(aesni_has_support(0), 0);
    const Cpu::CRestriction portable(Cpu::kPortable);
    EXPECT_EQ(aesni_has_support(kAesBit | kClmulBit), 0);
}

Bytes times(const Bytes& a, const Bytes& b) {
    Bytes c(16);
    aesni_gcm_mult(c.data(), a.data(), b.data());
    return c;
}

// The definition: SP 800-38D, 6.3.
Bytes timesByBits(const Bytes& x, const Bytes& y) {
    Bytes z(16), v = y;
    for (size_t i = 0; i < 128; ++i) {
        const bool taken = (x[i / 8] >> (7 - i % 8) & 1) != 0;
        for (size_t k = 0; taken && k < 16; ++k)
            z[k] ^= v[k];
        const bool falls = (v[15] & 1) != 0;
        for (size_t k = 15; k > 0; --k)
            v[k] = static_cast<std::uint8_t>(v[k] >> 1 | v[k - 1] << 7);
        v[0] = static_cast<std::uint8_t>(v[0] >> 1 ^ (falls ? 0xe1 : 0));
    }
    return z;
}

TEST(AesModule, MultipliesInTheFieldOfGcm) {
    Support::Random random;
    onEachPath([&] {
        // Test case 2 of the GCM paper: the first step of GHASH.
        EXPECT_EQ(
            times(fromHex("0388dace60b6a392f328c2b971b2fe78"), fromHex("66e94bd4ef8a2c3b884cfa59ca342b2e")),
            fromHex("5e2ec746917062882c85b0685353deb7"));
        for (int turn = 0; turn < 200; ++turn) {
            Bytes a(16), b(16);
            for (Bytes* factor : {&a, &b})
                std::generate(factor->begin(), factor->end(),
                              [&] { return static_cast<std::uint8_t>(random()); });
            const Bytes product = timesByBits(a, b);
            ASSERT_EQ(times(a, b), product);
            aesni_gcm_mult(a.data(), a.data(), b.data());
            ASSERT_EQ(a, product);
        }
    });
}

}  // namespace

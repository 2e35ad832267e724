// The peer's plain DES functions are deprecated, and the only ones that need no module of their own.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "Utils/Des.h"

#include <gtest/gtest.h>
#include <openssl/des.h>

#include <cstring>

#include "Samples.h"

namespace {

Samples::Bytes block(uint64_t value) {
    Samples::Bytes bytes;
    for (unsigned shift = 64; shift != 0; shift -= 8)
        bytes.push_back(static_cast<uint8_t>(value >> (shift - 8)));
    return bytes;
}

Samples::Bytes peerDes(const uint8_t* key, Samples::Bytes text, int direction) {
    DES_key_schedule schedule;
    const_DES_cblock block;
    std::memcpy(block, key, 8);
    DES_set_key_unchecked(&block, &schedule);
    std::memcpy(block, text.data(), 8);
    DES_ecb_encrypt(&block, reinterpret_cast<DES_cblock*>(text.data()), &schedule, direction);
    return text;
}

std::vector<unsigned long> registers() {
    std::vector<unsigned long> words(96);
    cp3key(words.data());
    return words;
}

// The passes over some blocks, word for word as D2des() is told, from the peer's single blocks.
Samples::Bytes peerPasses(const Samples::Bytes& keys, Samples::Bytes text) {
    for (size_t pass = 0; pass < 3; ++pass) {
        for (size_t at = 4; pass > 0 && at + 8 <= text.size(); at += 8)
            std::swap_ranges(&text[at], &text[at] + 4, &text[at] + 4);
        const uint8_t* const key = &keys[8 * pass % keys.size()];
        for (uint8_t* block = text.data(); block != text.data() + text.size(); block += 8) {
            const Samples::Bytes out =
                peerDes(key, {block, block + 8}, pass == 1 ? DES_DECRYPT : DES_ENCRYPT);
            std::copy(out.begin(), out.end(), block);
        }
    }
    return text;
}

// A key from a text by the peer, and what its place in the registers is to be.
Samples::Bytes peerKey(const std::string& passphrase, size_t size) {
    const Samples::Bytes keys(Df_Key, Df_Key + (size == 24 ? 24 : 16));
    Samples::Bytes key(Df_Key, Df_Key + size);
    size_t at = 0;
    do {
        for (size_t i = 0; i < size && at < passphrase.size(); ++i, ++at)
            key[i] = static_cast<uint8_t>(key[i] ^ (passphrase[at] & 0x7F));
        key = peerPasses(keys, key);
    } while (at < passphrase.size());
    return key;
}

}  // namespace

TEST(Des, PublishedVectorsHold) {
    // Key, plain, cipher: the first from tutorials of FIPS 46-3, the others from the tables of NIST SP 800-17
    // for the permutation and for the substitution.
    const uint64_t vectors[][3] = {{0x133457799BBCDFF1, 0x0123456789ABCDEF, 0x85E813540F0AB405},
                                   {0x1046913489980131, 0x0000000000000000, 0x88D55E54F54C97B4},
                                   {0x7CA110454A1A6E57, 0x01A1D6D039776742, 0x690F5B0D9A26939B}};
    for (const auto& [key, plain, cipher] : vectors) {
        Samples::Bytes text = block(plain);
        deskey(block(key).data(), 0);
        des(text.data(), text.data());
        EXPECT_EQ(text, block(cipher));
        deskey(block(key).data(), 1);
        des(text.data(), text.data());
        EXPECT_EQ(text, block(plain));
    }
}

TEST(Des, BlocksOfAllFormsMatchTheOracle) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        Samples::Bytes key = Samples::bytes(24, seed), text = Samples::bytes(16, seed + 1000);
        const Samples::Bytes first(text.begin(), text.begin() + 8);
        Samples::Bytes out(8), wide(16);
        deskey(key.data(), 0);
        des(text.data(), out.data());
        ASSERT_EQ(out, peerDes(key.data(), first, DES_ENCRYPT));
        for (const auto& [load, size] : {std::pair(&des2key, 16), {&des3key, 24}}) {
            const Samples::Bytes keys(key.begin(), key.begin() + size);
            load(key.data(), 0);
            Ddes(text.data(), out.data());
            ASSERT_EQ(out, peerPasses(keys, first));
            D2des(text.data(), wide.data());
            ASSERT_EQ(wide, peerPasses(keys, text));
            load(key.data(), 1);
            D2des(wide.data(), wide.data());
            ASSERT_EQ(wide, text);
        }
    }
}

TEST(Des, RegistersHoldRoundKeysAndCanBeMoved) {
    Samples::Bytes key = Samples::bytes(24, 5);
    unsigned long forward[32], backward[32];
    deskey(key.data(), 0);
    cpkey(forward);
    deskey(key.data(), 1);
    cpkey(backward);
    for (size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(forward[i], backward[(15 - i / 2) * 2 + i % 2]);
        EXPECT_EQ(forward[i] & ~0x3f3f3f3ful, 0u);
    }
    des3key(key.data(), 0);
    std::vector<unsigned long> three = registers();
    EXPECT_TRUE(std::equal(forward, forward + 32, three.begin()));
    des2key(key.data(), 1);
    EXPECT_TRUE(std::equal(backward, backward + 32, Kn3));
    use3key(three.data());
    EXPECT_EQ(registers(), three);
    usekey(backward);
    EXPECT_TRUE(std::equal(KnL, KnL + 32, backward));

    // Bits beyond 32 do not take part.
    unsigned long words[2] = {~0ul << 32 | 0x01234567, ~0ul << 32 | 0x89abcdef};
    Samples::Bytes text = block(0x0123456789abcdef);
    desfunc(words, backward);
    des(text.data(), text.data());
    EXPECT_EQ(block(words[0] << 32 | words[1]), text);
}

TEST(Des, KeysFromTextsMatchTheOracleAndLeaveNoTrace) {
    des3key(Samples::bytes(24, 9).data(), 0);
    const std::vector<unsigned long> before = registers();
    for (const auto& [make, size] : {std::pair(&makekey, 8U), {&make2key, 16U}, {&make3key, 24U}}) {
        for (size_t length = 0; length <= 50; ++length) {
            std::string text("A long \xe9 passphrase with more than forty-eight letters", length);
            Samples::Bytes key(size);
            const Samples::Bytes expected = peerKey(text, size);
            make(text.data(), key.data());
            ASSERT_EQ(key, expected) << length;
            ASSERT_EQ(text, std::string(length, '\0'));
        }
    }
    EXPECT_EQ(registers(), before);
}

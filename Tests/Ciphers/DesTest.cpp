// The peer's plain DES functions are deprecated, and the only ones that need no module of their own.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "Utils/Des.h"

#include <gtest/gtest.h>
#include <openssl/des.h>

#include <array>
#include <cstring>

#include "Samples.h"

namespace {

using Block = std::array<unsigned char, 8>;

Block block(uint64_t value) {
    Block bytes;
    for (size_t i = 0; i < 8; ++i)
        bytes[i] = static_cast<unsigned char>(value >> (56 - 8 * i));
    return bytes;
}

Samples::Bytes peerDes(const uint8_t* key, Samples::Bytes in, int direction) {
    DES_key_schedule schedule;
    const_DES_cblock keyBlock;
    std::memcpy(keyBlock, key, 8);
    DES_set_key_unchecked(&keyBlock, &schedule);
    Samples::Bytes out(8);
    DES_ecb_encrypt(reinterpret_cast<const_DES_cblock*>(in.data()), reinterpret_cast<DES_cblock*>(out.data()),
                    &schedule, direction);
    return out;
}

std::vector<unsigned long> registers() {
    std::vector<unsigned long> words(96);
    cp3key(words.data());
    return words;
}

// The passes over some blocks, word for word as D2des() is told, from the peer's single blocks.
Samples::Bytes peerPasses(const Samples::Bytes& key, Samples::Bytes text) {
    const size_t blocks = text.size() / 8;
    const auto pass = [&](size_t keyAt, int direction) {
        for (size_t i = 0; i < blocks; ++i) {
            const Samples::Bytes in(text.begin() + static_cast<long>(8 * i),
                                    text.begin() + static_cast<long>(8 * i + 8));
            const Samples::Bytes out = peerDes(key.data() + keyAt, in, direction);
            std::copy(out.begin(), out.end(), text.begin() + static_cast<long>(8 * i));
        }
    };
    const auto swapWords = [&] {
        for (size_t at = 4; at + 8 <= text.size(); at += 8)
            std::swap_ranges(&text[at], &text[at] + 4, &text[at] + 4);
    };
    pass(0, DES_ENCRYPT);
    swapWords();
    pass(8, DES_DECRYPT);
    swapWords();
    pass(key.size() == 24 ? 16 : 0, DES_ENCRYPT);
    return text;
}

// A key from a text by the peer, and what its place in the registers is to be.
Samples::Bytes peerKey(const std::string& passphrase, size_t size) {
    const Samples::Bytes start(Df_Key, Df_Key + 24);
    const Samples::Bytes keys(start.begin(), start.begin() + (size == 24 ? 24 : 16));
    Samples::Bytes key(start.begin(), start.begin() + static_cast<long>(size));
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
    struct Vector {
        uint64_t key, plain, cipher;
    };
    // The first from tutorials of FIPS 46-3, the others from the tables of NIST SP 800-17: variable plain
    // text, variable key, permutation and substitution.
    const Vector vectors[] = {{0x133457799BBCDFF1, 0x0123456789ABCDEF, 0x85E813540F0AB405},
                              {0x0101010101010101, 0x8000000000000000, 0x95F8A5E5DD31D900},
                              {0x0101010101010101, 0x4000000000000000, 0xDD7F121CA5015619},
                              {0x8001010101010101, 0x0000000000000000, 0x95A8D72813DAA94D},
                              {0x1046913489980131, 0x0000000000000000, 0x88D55E54F54C97B4},
                              {0x7CA110454A1A6E57, 0x01A1D6D039776742, 0x690F5B0D9A26939B}};
    for (const Vector& vector : vectors) {
        Block key = block(vector.key), text = block(vector.plain);
        deskey(key.data(), 0);
        des(text.data(), text.data());
        EXPECT_EQ(text, block(vector.cipher));
        deskey(key.data(), 1);
        des(text.data(), text.data());
        EXPECT_EQ(text, block(vector.plain));
    }
}

TEST(Des, BlocksOfAllFormsMatchTheOracle) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        Samples::Bytes key = Samples::bytes(24, seed), text = Samples::bytes(16, seed + 1000);
        const Samples::Bytes first(text.begin(), text.begin() + 8);
        const Samples::Bytes twoKeys(key.begin(), key.begin() + 16);
        Samples::Bytes out(8), wide(16), back(16);

        deskey(key.data(), 0);
        des(text.data(), out.data());
        ASSERT_EQ(out, peerDes(key.data(), first, DES_ENCRYPT));
        des2key(key.data(), 0);
        Ddes(text.data(), out.data());
        ASSERT_EQ(out, peerPasses(twoKeys, first));
        D2des(text.data(), wide.data());
        ASSERT_EQ(wide, peerPasses(twoKeys, text));
        des3key(key.data(), 0);
        Ddes(text.data(), out.data());
        ASSERT_EQ(out, peerPasses(key, first));
        D2des(text.data(), wide.data());
        ASSERT_EQ(wide, peerPasses(key, text));
        des3key(key.data(), 1);
        D2des(wide.data(), back.data());
        ASSERT_EQ(back, text);
    }
}

TEST(Des, RegistersHoldRoundKeysAndCanBeMoved) {
    Samples::Bytes key = Samples::bytes(24, 5);
    deskey(key.data(), 0);
    unsigned long forward[32], backward[32];
    cpkey(forward);
    deskey(key.data(), 1);
    cpkey(backward);
    for (size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(forward[i], backward[(15 - i / 2) * 2 + i % 2]);
        EXPECT_EQ(forward[i] & ~0x3f3f3f3ful, 0u);
    }
    des3key(key.data(), 0);
    const std::vector<unsigned long> three = registers();
    EXPECT_TRUE(std::equal(forward, forward + 32, KnL));
    des2key(key.data(), 1);
    EXPECT_TRUE(std::equal(KnL, KnL + 32, Kn3));
    EXPECT_TRUE(std::equal(KnL, KnL + 32, backward));
    std::vector<unsigned long> copy = three;
    use3key(copy.data());
    EXPECT_EQ(registers(), three);
    usekey(backward);
    EXPECT_TRUE(std::equal(KnL, KnL + 32, backward));

    // Bits beyond 32 do not take part.
    unsigned long words[2] = {~0ul << 32 | 0x01234567, ~0ul << 32 | 0x89abcdef};
    Block text = block(0x0123456789abcdef);
    desfunc(words, backward);
    des(text.data(), text.data());
    EXPECT_EQ(block(words[0] << 32 | words[1]), text);
}

TEST(Des, KeysFromTextsMatchTheOracleAndLeaveNoTrace) {
    const std::pair<void (*)(char*, unsigned char*), size_t> makers[] = {
        {makekey, 8}, {make2key, 16}, {make3key, 24}};
    Samples::Bytes loaded = Samples::bytes(24, 9);
    des3key(loaded.data(), 0);
    const std::vector<unsigned long> before = registers();
    for (const auto& [make, size] : makers) {
        for (size_t length = 0; length <= 50; ++length) {
            std::string text =
                std::string("A long \xe9 passphrase with more than forty-eight letters").substr(0, length);
            const Samples::Bytes expected = peerKey(text, size);
            Samples::Bytes key(size);
            make(text.data(), key.data());
            ASSERT_EQ(key, expected) << size << " " << length;
            ASSERT_EQ(text, std::string(length, '\0'));
        }
    }
    EXPECT_EQ(registers(), before);
}

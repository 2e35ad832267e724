#include "Utils/TripleDes.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <thread>

#include "Samples.h"
#include "Support/GuardedBuffer.h"
#include "Support/LogCapture.h"
#include "Utils/Des.h"

// Looks for a pattern in what is freed.
namespace {

const char kSecret[] = "A secret of 24 letters..";
std::atomic<int> s_freedSecrets;

void lookAt(void* freed) {
    if (freed != nullptr && memmem(freed, malloc_usable_size(freed), kSecret, 8) != nullptr) ++s_freedSecrets;
}

}  // namespace

void* operator new(size_t size) {
    if (void* p = std::malloc(size)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
    lookAt(p);
    std::free(p);
}
void operator delete(void* p, size_t) noexcept { operator delete(p); }

namespace {

using Samples::Bytes;
using Tovra::Utils::CTripleDes;

// What the class promises, block by block from the plain functions, whose own tests compare with the peer.
struct Model {
    Bytes key;
    size_t blockSize;
    const uint8_t* iv;

    Bytes encrypted(Bytes text) const {
        Bytes padded = key;
        padded.resize(24);
        (key.size() <= 8 ? deskey : key.size() <= 16 ? des2key : des3key)(padded.data(), 0);
        const auto transform = key.size() <= 8 ? des : blockSize == 16 ? D2des : Ddes;
        text.resize(text.size() / blockSize * blockSize);
        for (size_t at = 0; at < text.size(); at += blockSize) {
            const uint8_t* const previous = at == 0 ? iv : &text[at - blockSize];
            for (size_t i = 0; i < blockSize && iv != nullptr; ++i)
                text[at + i] ^= previous[i];
            transform(&text[at], &text[at]);
        }
        return text;
    }
};

// Apart and in place; each call chains anew.
void compare(const Model& model, CTripleDes& cipher, size_t size) {
    const Bytes plain = Samples::bytes(size, static_cast<unsigned>(size));
    const Bytes coded = model.encrypted(plain);
    const Tests::CGuardedBuffer in(plain.data(), size), apart(size);
    for (uint8_t* out : {apart.data(), in.data()}) {
        ASSERT_EQ(cipher.encrypt(out, in.data(), size), coded.size() == size);
        ASSERT_TRUE(std::equal(coded.begin(), coded.end(), out)) << size;
        ASSERT_TRUE(cipher.decrypt(in.data(), out, coded.size()));
        ASSERT_TRUE(std::equal(plain.begin(), plain.end(), in.data())) << size;
    }
}

}  // namespace

// A longer key is cut, and the vector is read to one block only.
TEST(TripleDes, EveryKeyLengthBlockAndModeMatchesTheBlockFunctions) {
    Tovra::Fundo::setPrintLogLevel(0);
    const Bytes key = Samples::bytes(24, 8), iv = Samples::bytes(16, 77);
    for (unsigned variant = 0; variant < 4 * 26; ++variant) {
        const size_t keyLength = 1 + variant / 4, blockSize = variant % 2 != 0 && keyLength > 8 ? 16 : 8;
        const Tests::CGuardedBuffer keyBuffer(key.data(), std::min(keyLength, key.size()));
        const Tests::CGuardedBuffer ivBuffer(iv.data(), blockSize);
        const Model model{Bytes(keyBuffer.data(), keyBuffer.data() + keyBuffer.size()), blockSize,
                          variant % 4 < 2 ? nullptr : ivBuffer.data()};
        CTripleDes cipher(
            keyBuffer.data(), keyLength,
            variant % 2 != 0 ? CTripleDes::Block16 : static_cast<CTripleDes::BlockType>(variant), model.iv);
        for (size_t size = 0; size <= 100; ++size)
            ASSERT_NO_FATAL_FAILURE(compare(model, cipher, size)) << variant;
    }
}

TEST(TripleDes, BadArgumentsAreLoggedToTheLetter) {
    Support::LogCapture log(2);
    uint8_t buffer[24] = {};
    CTripleDes none(buffer, 0, CTripleDes::Block8, nullptr), cipher(buffer, 8, CTripleDes::Block16, nullptr);
    EXPECT_FALSE(none.encrypt(buffer, buffer, 8));
    EXPECT_FALSE(none.decrypt(buffer, buffer, 8));
    EXPECT_FALSE(cipher.encrypt(buffer, buffer, 20));
    EXPECT_FALSE(cipher.decrypt(buffer, buffer, 20));
    EXPECT_TRUE(cipher.encrypt(buffer, nullptr, 16));
    EXPECT_TRUE(cipher.decrypt(nullptr, buffer, 8));
    const char* const once[] = {
        "CTripleDes::encrypt(): size is not the multiple of the 'BlockSize'!!! size(20), real_size(16)\n",
        "CTripleDes::encrypt(): size is not the multiple of th 'BlockSize'!!! size(20), real_size(16)\n",
        "en_de_crypt(): src is NULL!!\n", "en_de_crypt(): dst is NULL!!\n"};
    for (const char* text : once)
        EXPECT_EQ(log.count(text), 1u) << text;
    EXPECT_EQ(log.count(", key_length is 0,is unvalid!\n"), 2u);
    EXPECT_EQ(log.count("[Src/Utils/TripleDes:"), 4u);
    EXPECT_EQ(log.lines().size(), 6u);
}

TEST(TripleDes, ACallWithoutDataStillLoadsTheRegisters) {
    Bytes key = Samples::bytes(24);
    CTripleDes cipher(key.data(), 24, CTripleDes::Block8, nullptr);
    std::vector<unsigned long> expected(96), found(96);
    des3key(key.data(), 0);
    cp3key(expected.data());
    use3key(found.data());
    EXPECT_TRUE(cipher.encrypt(key.data(), key.data(), 0));
    cp3key(found.data());
    EXPECT_EQ(found, expected);
}

TEST(TripleDes, TheKeyIsGoneFromFreedMemory) {
    delete new std::string(std::string(40, ' ') + kSecret);
    ASSERT_GT(s_freedSecrets.exchange(0), 0) << "the hook sees nothing";
    const auto* key = reinterpret_cast<const uint8_t*>(kSecret);
    auto* cipher = new CTripleDes(key, 24, CTripleDes::Block8, key);
    uint8_t block[8] = {};
    cipher->encrypt(block, block, 8);
    delete cipher;
    EXPECT_EQ(s_freedSecrets, 0);
}

TEST(TripleDes, CallsOfOneDirectionExcludeEachOther) {
    const Bytes plain = Samples::bytes(512);
    std::atomic<int> differing{0};
    const auto encryptOften = [&](size_t keyLength) {
        CTripleDes cipher(&plain[keyLength], keyLength, CTripleDes::Block8, nullptr);
        Bytes texts[2] = {plain, plain};
        for (size_t i = 0; i < 5000; ++i) {
            cipher.encrypt(texts[i > 0].data(), plain.data(), plain.size());
            if (i > 0 && texts[0] != texts[1]) ++differing;
        }
    };
    std::thread other(encryptOften, 8);
    encryptOften(24);
    other.join();
    EXPECT_EQ(differing, 0);
}

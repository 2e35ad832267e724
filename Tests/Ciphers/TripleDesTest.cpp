#define OPENSSL_SUPPRESS_DEPRECATED

#include "Utils/TripleDes.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <openssl/des.h>

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
void operator delete(void* p, size_t) noexcept {
    lookAt(p);
    std::free(p);
}

namespace {

using Samples::Bytes;
using Tovra::Utils::CTripleDes;

// What the class promises, block by block from the plain functions, whose own tests compare with the peer.
struct Model {
    Bytes key;
    bool wide;
    const uint8_t* iv;

    size_t blockSize() const { return wide && key.size() > 8 ? 16 : 8; }

    Bytes run(const Bytes& in, bool encrypting) const {
        Bytes padded = key;
        padded.resize(24);
        const short edf = encrypting ? 0 : 1;
        key.size() <= 8    ? deskey(padded.data(), edf)
        : key.size() <= 16 ? des2key(padded.data(), edf)
                           : des3key(padded.data(), edf);
        const size_t size = blockSize();
        const auto transform = key.size() <= 8 ? des : size == 16 ? D2des : Ddes;
        Bytes prev = iv == nullptr ? Bytes(size) : Bytes(iv, iv + size), out;
        for (size_t at = 0; at + size <= in.size(); at += size) {
            Bytes text(&in[at], &in[at] + size);
            const Bytes source = text;
            if (encrypting && iv != nullptr) combine(text, prev);
            transform(text.data(), text.data());
            if (!encrypting && iv != nullptr) combine(text, prev);
            prev = encrypting ? text : source;
            out.insert(out.end(), text.begin(), text.end());
        }
        return out;
    }

    static void combine(Bytes& into, const Bytes& with) {
        for (size_t i = 0; i < into.size(); ++i)
            into[i] ^= with[i];
    }
};

void compare(const Model& model, CTripleDes& cipher, size_t size) {
    const Bytes plain = Samples::bytes(size, static_cast<unsigned>(size));
    const Bytes coded = model.run(plain, true);
    const bool whole = size % model.blockSize() == 0;
    const Tests::CGuardedBuffer in(size), out(coded.size());
    std::copy(plain.begin(), plain.end(), in.data());
    ASSERT_EQ(cipher.encrypt(out.data(), in.data(), size), whole);
    ASSERT_TRUE(std::equal(coded.begin(), coded.end(), out.data())) << size;
    ASSERT_EQ(cipher.decrypt(in.data(), out.data(), coded.size()), true);
    ASSERT_TRUE(std::equal(plain.begin(), plain.end(), in.data())) << size;
    // In place, and chained anew by each call.
    ASSERT_EQ(cipher.encrypt(in.data(), in.data(), size), whole);
    ASSERT_TRUE(std::equal(coded.begin(), coded.end(), in.data())) << size;
    ASSERT_TRUE(cipher.decrypt(in.data(), in.data(), coded.size()));
    ASSERT_TRUE(std::equal(plain.begin(), plain.end(), in.data())) << size;
}

}  // namespace

TEST(TripleDes, EveryKeyLengthBlockAndModeMatchesTheBlockFunctions) {
    Tovra::Fundo::setPrintLogLevel(0);
    const Bytes iv = Samples::bytes(16, 77);
    for (size_t keyLength = 1; keyLength <= 24; ++keyLength) {
        for (const bool wide : {false, true}) {
            for (const uint8_t* vector : {static_cast<const uint8_t*>(nullptr), iv.data()}) {
                const Model model{Samples::bytes(keyLength, 3), wide, vector};
                CTripleDes cipher(model.key.data(), keyLength,
                                  wide ? CTripleDes::Block16 : CTripleDes::Block8, vector);
                for (size_t size = 0; size <= 100; ++size)
                    ASSERT_NO_FATAL_FAILURE(compare(model, cipher, size)) << keyLength << wide;
            }
        }
    }
}

TEST(TripleDes, ChainedBuffersMatchTheOracle) {
    const Bytes key = Samples::bytes(24, 8), iv = Samples::bytes(8, 9), plain = Samples::bytes(4096, 10);
    DES_key_schedule schedules[3];
    for (size_t i = 0; i < 3; ++i) {
        const_DES_cblock part;
        std::memcpy(part, key.data() + 8 * i, 8);
        DES_set_key_unchecked(&part, &schedules[i]);
    }
    DES_cblock chain;
    std::memcpy(chain, iv.data(), 8);
    Bytes expected(plain.size()), coded(plain.size()), back(plain.size());
    DES_ede3_cbc_encrypt(plain.data(), expected.data(), static_cast<long>(plain.size()), &schedules[0],
                         &schedules[1], &schedules[2], &chain, DES_ENCRYPT);
    // A longer key is cut, and the vector is read to one block only.
    const Tests::CGuardedBuffer guardedKey(24), guardedIv(8);
    std::copy(key.begin(), key.end(), guardedKey.data());
    std::copy(iv.begin(), iv.end(), guardedIv.data());
    CTripleDes cipher(guardedKey.data(), 30, CTripleDes::Block8, guardedIv.data());
    EXPECT_TRUE(cipher.encrypt(coded.data(), plain.data(), plain.size()));
    EXPECT_EQ(coded, expected);
    EXPECT_TRUE(cipher.decrypt(back.data(), coded.data(), coded.size()));
    EXPECT_EQ(back, plain);
}

TEST(TripleDes, BadArgumentsAreLoggedToTheLetter) {
    Support::LogCapture log(2);
    uint8_t buffer[24] = {};
    CTripleDes none(buffer, 0, CTripleDes::Block8, nullptr);
    EXPECT_FALSE(none.encrypt(buffer, buffer, 8));
    EXPECT_FALSE(none.decrypt(buffer, buffer, 8));
    EXPECT_EQ(log.count(", key_length is 0,is unvalid!\n"), 2u);
    EXPECT_EQ(log.count("[Src/Utils/TripleDes:"), 2u);

    CTripleDes cipher(buffer, 8, CTripleDes::Block16, nullptr);
    EXPECT_FALSE(cipher.encrypt(buffer, buffer, 20));
    EXPECT_EQ(log.count(", CTripleDes::encrypt(): size is not the multiple of the 'BlockSize'!!! size(20), "
                        "real_size(16)\n"),
              1u);
    EXPECT_FALSE(cipher.decrypt(buffer, buffer, 20));
    EXPECT_EQ(log.count(", CTripleDes::encrypt(): size is not the multiple of th 'BlockSize'!!! size(20), "
                        "real_size(16)\n"),
              1u);
    EXPECT_TRUE(cipher.encrypt(buffer, nullptr, 16));
    EXPECT_EQ(log.count("en_de_crypt(): src is NULL!!\n"), 1u);
    EXPECT_FALSE(cipher.decrypt(nullptr, buffer, 9));
    EXPECT_EQ(log.count("en_de_crypt(): dst is NULL!!\n"), 1u);
    EXPECT_EQ(log.lines().size(), 7u);
}

TEST(TripleDes, ACallWithoutDataStillLoadsTheRegisters) {
    uint8_t key[24];
    std::memcpy(key, kSecret, 24);
    CTripleDes cipher(key, 24, CTripleDes::Block8, nullptr);
    des3key(key, 0);
    std::vector<unsigned long> expected(96), found(96);
    cp3key(expected.data());
    std::vector<unsigned long> zeros(96);
    use3key(zeros.data());
    EXPECT_TRUE(cipher.encrypt(key, key, 0));
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
    const auto encryptOften = [&](size_t keyLength) {
        const Bytes key = Samples::bytes(keyLength, static_cast<unsigned>(keyLength));
        CTripleDes cipher(key.data(), keyLength, CTripleDes::Block8, nullptr);
        Bytes first(plain.size()), again(plain.size());
        cipher.encrypt(first.data(), plain.data(), plain.size());
        for (int i = 0; i < 300; ++i) {
            cipher.encrypt(again.data(), plain.data(), plain.size());
            if (again != first) return false;
        }
        return true;
    };
    bool single = false;
    std::thread other([&] { single = encryptOften(8); });
    const bool triple = encryptOften(24);
    other.join();
    EXPECT_TRUE(single);
    EXPECT_TRUE(triple);
}

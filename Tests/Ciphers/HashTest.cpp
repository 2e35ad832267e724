#include <gtest/gtest.h>
#include <openssl/evp.h>

#include "Samples.h"
#include "Support/GuardedBuffer.h"
#include "Support/LogCapture.h"
#include "Utils/Md5.h"
#include "Utils/Sha1.h"
#include "Utils/Sha1/Sha1Kernels.h"

using namespace Tovra::Utils;

namespace {

// One face for both classes, whose signatures differ by the size of the buffer.
struct Md5 {
    static constexpr size_t kSize = 16;
    static const EVP_MD* peer() { return EVP_md5(); }
    void update(const uint8_t* data, size_t length) { object.update(data, length); }
    void final(uint8_t* digest) { object.final(digest); }
    void hex(char* text) { object.hex(text); }
    CMd5 object;
};
struct Sha {
    static constexpr size_t kSize = 20;
    static const EVP_MD* peer() { return EVP_sha1(); }
    void update(const uint8_t* data, size_t length) { object.update(data, length); }
    void final(uint8_t* digest) { object.final(digest, kSize); }
    void hex(char* text) { object.hex(text, 2 * kSize); }
    CSha1 object;
};

template <class Hash>
std::string hexOf(Hash& hash) {
    const Tests::CGuardedBuffer text(2 * Hash::kSize);
    hash.hex(text.text());
    return {text.text(), text.size()};
}

template <class Hash>
std::string hexOf(const std::string& data) {
    Hash hash;
    hash.update(Samples::text(data), data.size());
    return hexOf(hash);
}

template <class Hash>
void compareLengthsAndPieces() {
    const Samples::Bytes sample = Samples::bytes(3000);
    std::mt19937 random(11);
    Hash hash;
    for (size_t length = 0; length <= sample.size(); length += length < 300 ? 1 : 271) {
        const uint8_t* data = sample.data() + sample.size() - length;
        uint8_t expected[EVP_MAX_MD_SIZE];
        EVP_Digest(data, length, expected, nullptr, Hash::peer(), nullptr);
        for (int round = 0; round < 3 && length != 0; ++round) {
            Samples::inPieces(length, random,
                              [&](size_t start, size_t size) { hash.update(data + start, size); });
            const Tests::CGuardedBuffer digest(Hash::kSize);
            hash.final(digest.data());
            ASSERT_TRUE(std::equal(expected, expected + Hash::kSize, digest.data())) << length;
        }
    }
}

template <class Hash>
void checkFinishedState() {
    Hash hash;
    hash.update(Samples::text("abc"), 3);
    const std::string abc = hexOf(hash);
    EXPECT_EQ(hexOf(hash), abc);
    hash.update(nullptr, 5);
    hash.update(Samples::text("x"), 0);
    EXPECT_EQ(hexOf(hash), abc);
    hash.update(Samples::text("abc"), 3);
    EXPECT_EQ(hexOf(hash), abc);
}

}  // namespace

TEST(Hash, TheVectorsOfRfc1321Hold) {
    EXPECT_EQ(hexOf<Md5>(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(hexOf<Md5>("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(hexOf<Md5>("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(hexOf<Md5>("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
              "d174ab98d277d9f5a5611c2c9f419d9f");
}

TEST(Hash, TheVectorsOfFips180Hold) {
    for (const unsigned features : {Cpu::kPortable + 0u, Cpu::kAll + 0u}) {
        const Cpu::CRestriction path(features);
        EXPECT_EQ(hexOf<Sha>(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
        EXPECT_EQ(hexOf<Sha>("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
        EXPECT_EQ(hexOf<Sha>("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
                  "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
        EXPECT_EQ(hexOf<Sha>(std::string(1000000, 'a')), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
    }
}

TEST(Hash, Md5OfAnyLengthInAnyPiecesMatchesTheOracle) { compareLengthsAndPieces<Md5>(); }

TEST(Hash, PortableSha1OfAnyLengthInAnyPiecesMatchesTheOracle) {
    const Cpu::CRestriction portable(Cpu::kPortable);
    ASSERT_TRUE(Sha1::kernel() == Sha1::compressPortable);
    compareLengthsAndPieces<Sha>();
}

#if FUNDO_X86_64
TEST(Hash, Sha1ByInstructionsOfAnyLengthInAnyPiecesMatchesTheOracle) {
    if (!Cpu::has(Cpu::kSha)) GTEST_SKIP() << "no SHA instructions";
    ASSERT_TRUE(Sha1::kernel() == Sha1::compressSha);
    compareLengthsAndPieces<Sha>();
}
#endif

TEST(Hash, AFinishedObjectRepeatsItsDigestUntilDataComes) {
    checkFinishedState<Md5>();
    checkFinishedState<Sha>();
    CMd5 restarted;
    restarted.update(Samples::text("abc"), 3);
    restarted.init();
    char text[32];
    restarted.hex(text);
    EXPECT_EQ(std::string(text, 32), "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(Hash, BadBuffersAreLoggedAndLeftAlone) {
    Support::LogCapture log(2);
    CMd5 md5;
    md5.final(nullptr);
    EXPECT_EQ(log.count("digest is NULL\n"), 1u);
    md5.hex(nullptr);
    EXPECT_EQ(log.count("hash is NULL\n"), 1u);
    CSha1 sha1;
    sha1.final(nullptr, 20);
    EXPECT_EQ(log.count("hash is NULL!\n"), 1u);
    unsigned char digest[20] = {7};
    sha1.final(digest, 19);
    EXPECT_EQ(log.count("len(19) is invalid!\n"), 1u);
    EXPECT_EQ(digest[0], 7);
    sha1.hex(nullptr, 41);
    EXPECT_EQ(log.count("str is NULL!\n"), 1u);
    char text[42] = "#########################################";
    sha1.hex(text, 39);
    EXPECT_EQ(log.count("len(39) is invalid!\n"), 1u);
    EXPECT_EQ(text[0], '#');
    sha1.hex(text, 40);
    EXPECT_EQ(text[40], '#');
    sha1.hex(text, 41);
    EXPECT_STREQ(text, "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(log.lines().size(), 6u);
}

TEST(Hash, ThePlainSha1FunctionsCountAndWait) {
    SHA1_CTX ctx;
    SHA1Init(&ctx);
    SHA1Update(&ctx, Samples::text(std::string(70, 'x')), 70);
    EXPECT_EQ(ctx.count, 560u);
    EXPECT_EQ(ctx.bufferLength, 6u);
    SHA1_CTX fork = ctx;
    unsigned char digest[20];
    SHA1Final(&ctx, digest);
    uint8_t expected[20];
    EVP_Digest(std::string(70, 'x').data(), 70, expected, nullptr, EVP_sha1(), nullptr);
    EXPECT_TRUE(std::equal(digest, digest + 20, expected));
    SHA1Final(&fork, nullptr);
    EXPECT_EQ(fork.state[0], ctx.state[0]);
}

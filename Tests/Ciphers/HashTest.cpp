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
struct Md5 : CMd5 {
    static constexpr size_t kSize = 16;
    static const EVP_MD* peer() { return EVP_md5(); }
};
struct Sha : CSha1 {
    static constexpr size_t kSize = 20;
    static const EVP_MD* peer() { return EVP_sha1(); }
    void final(uint8_t* digest) { CSha1::final(digest, kSize); }
    void hex(char* text) { CSha1::hex(text, 2 * kSize); }
};

// Of what an object got before, and of this.
template <class Hash>
std::string hexOf(const std::string& data, Hash&& hash = Hash()) {
    hash.update(reinterpret_cast<const uint8_t*>(data.data()), data.size());
    const Tests::CGuardedBuffer text(2 * std::decay_t<Hash>::kSize);
    hash.hex(text.text());
    return {text.text(), text.size()};
}

// Any length in any pieces, by an object that repeats its digest and starts afresh with the next data.
template <class Hash>
void compareLengthsAndPieces() {
    const Samples::Bytes sample = Samples::bytes(3000);
    std::mt19937 random(11);
    Hash hash;
    for (size_t length = 1; length <= sample.size(); length += length < 300 ? 1 : 271) {
        const uint8_t* data = sample.data() + sample.size() - length;
        uint8_t expected[EVP_MAX_MD_SIZE];
        EVP_Digest(data, length, expected, nullptr, Hash::peer(), nullptr);
        for (int round = 0; round < 3; ++round) {
            Samples::inPieces(length, random,
                              [&](size_t start, size_t size) { hash.update(data + start, size); });
            const Tests::CGuardedBuffer digest(Hash::kSize);
            for (int repeat = 0; repeat < 2; ++repeat) {
                hash.final(digest.data());
                ASSERT_TRUE(std::equal(expected, expected + Hash::kSize, digest.data())) << length;
                hash.update(nullptr, 5);
                hash.update(data, 0);
            }
        }
    }
}

}  // namespace

TEST(Hash, Md5MatchesRfc1321AndTheOracle) {
    EXPECT_EQ(hexOf<Md5>("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
    compareLengthsAndPieces<Md5>();
    Md5 restarted;
    restarted.update(Samples::bytes(3).data(), 3);
    restarted.init();
    EXPECT_EQ(hexOf("", restarted), "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(Hash, Sha1MatchesFips180AndTheOracleByEachKernel) {
    const std::pair<unsigned, Sha1::Compress> paths[] = {
#if FUNDO_X86_64
        {Cpu::kSha, Sha1::compressSha},
#endif
        {Cpu::kPortable, Sha1::compressPortable}
    };
    for (const auto& [features, kernel] : paths) {
        if (!Cpu::has(features)) continue;
        const Cpu::CRestriction path(features);
        ASSERT_TRUE(Sha1::kernel() == kernel);
        EXPECT_EQ(hexOf<Sha>("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
        EXPECT_EQ(hexOf<Sha>(std::string(1000000, 'a')), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
        compareLengthsAndPieces<Sha>();
    }
}

TEST(Hash, BadBuffersAreLoggedAndLeftAlone) {
    Support::LogCapture log(2);
    CSha1 sha1;
    char text[42] = "#########################################";
    CMd5().final(nullptr);
    CMd5().hex(nullptr);
    sha1.final(nullptr, 20);
    sha1.final(reinterpret_cast<uint8_t*>(text), 19);
    sha1.hex(nullptr, 41);
    sha1.hex(text, 39);
    EXPECT_EQ(text[0], '#');
    sha1.hex(text, 40);
    EXPECT_EQ(text[40], '#');
    sha1.hex(text, 41);
    EXPECT_STREQ(text, "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    for (const char* line : {"digest is NULL\n", "hash is NULL\n", "hash is NULL!\n", "len(19) is invalid!\n",
                             "str is NULL!\n", "len(39) is invalid!\n"})
        EXPECT_EQ(log.count(line), 1u) << line;
    EXPECT_EQ(log.lines().size(), 6u);
}

TEST(Hash, ThePlainSha1FunctionsCountAndWait) {
    SHA1_CTX ctx;
    SHA1Init(&ctx);
    SHA1Update(&ctx, Samples::bytes(70).data(), 70);
    EXPECT_EQ(ctx.count, 560u);
    EXPECT_EQ(ctx.bufferLength, 6u);
    SHA1_CTX fork = ctx;
    unsigned char digest[20];
    SHA1Final(&ctx, digest);
    SHA1Final(&fork, nullptr);
    EXPECT_TRUE(std::equal(ctx.state, ctx.state + 5, fork.state));
}

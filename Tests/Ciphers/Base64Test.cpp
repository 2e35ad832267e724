#include "Utils/Base64.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <cstring>

#include "Samples.h"
#include "Support/GuardedBuffer.h"
#include "Utils/Base64/Base64Kernels.h"

using namespace Tovra::Utils;

namespace {

std::string encoded(const std::string& data) {
    std::string coded(static_cast<size_t>(base64EncodeLen(static_cast<int>(data.size()))), '#');
    EXPECT_EQ(base64Encode(coded.data(), data.data(), static_cast<int>(data.size())),
              static_cast<int>(coded.size()));
    EXPECT_EQ(coded.back(), '\0');
    coded.pop_back();
    return coded;
}

std::string decoded(const std::string& coded) {
    std::string data(static_cast<size_t>(base64DecodeLen(coded.c_str())), '#');
    const int length = base64Decode(data.data(), coded.c_str());
    EXPECT_EQ(data.at(static_cast<size_t>(length)), '\0');
    data.resize(static_cast<size_t>(length));
    return data;
}

// Both directions for all lengths, each buffer ending right before an inaccessible page: the text has no
// terminator of its own, its padding or a line break ends it.
void compareAllLengths() {
    for (int length = 0; length <= 400; ++length) {
        const Samples::Bytes sample = Samples::bytes(static_cast<size_t>(length), 3);
        const Tests::CGuardedBuffer data(sample.size());
        std::copy(sample.begin(), sample.end(), data.data());
        std::string expected(static_cast<size_t>(base64EncodeLen(length)), '\0');
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(expected.data()), sample.data(), length);

        const Tests::CGuardedBuffer coded(expected.size());
        ASSERT_EQ(base64Encode(coded.text(), data.text(), length), static_cast<int>(expected.size()));
        ASSERT_EQ(std::memcmp(coded.data(), expected.data(), expected.size()), 0) << length;

        coded.text()[expected.size() - 1] = '\n';
        const Tests::CGuardedBuffer back(static_cast<size_t>(base64DecodeLen(coded.text())));
        ASSERT_GE(back.size(), sample.size() + 1);
        ASSERT_EQ(base64Decode(back.text(), coded.text()), length);
        ASSERT_TRUE(std::equal(sample.begin(), sample.end(), back.data())) << length;
    }
}

// Puts each character at each place of a long text: those outside of the alphabet end it there.
void endAtEachCharacter() {
    for (size_t place = 0; place < 150; ++place) {
        std::string coded(200, 'Q');
        for (int character = 0; character < 256; ++character) {
            coded[place] = static_cast<char>(character);
            const bool inside = character != 0 && std::strchr(Base64::basis_64, character) != nullptr;
            const size_t length = inside ? coded.size() : place;
            ASSERT_EQ(base64DecodeLen(coded.c_str()), static_cast<int>((length + 3) / 4 * 3 + 1)) << place;
            ASSERT_EQ(decoded(coded).size(), length / 4 * 3 + (length % 4 > 1 ? length % 4 - 1 : 0))
                << place << " " << character;
        }
    }
}

void checkPath(const Base64::Kernel& expected) {
    ASSERT_EQ(&Base64::kernel(), &expected);
    compareAllLengths();
    endAtEachCharacter();
}

}  // namespace

TEST(Base64, TheVectorsOfRfc4648Hold) {
    const std::pair<const char*, const char*> vectors[] = {{"", ""},
                                                           {"f", "Zg=="},
                                                           {"fo", "Zm8="},
                                                           {"foo", "Zm9v"},
                                                           {"foob", "Zm9vYg=="},
                                                           {"fooba", "Zm9vYmE="},
                                                           {"foobar", "Zm9vYmFy"},
                                                           {"M", "TQ=="}};
    for (const auto& [data, coded] : vectors) {
        EXPECT_EQ(encoded(data), coded);
        EXPECT_EQ(decoded(coded), data);
    }
}

TEST(Base64, LengthsAndEndsAreAsPromised) {
    const int lengths[][2] = {{0, 1}, {1, 5}, {2, 5}, {3, 5}, {4, 9}};
    for (const auto& [bytes, size] : lengths)
        EXPECT_EQ(base64EncodeLen(bytes), size);
    char coded[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(base64Encode(coded, "abc", -3), 1);
    EXPECT_EQ(std::string(coded, 2), std::string("\0#", 2));
    EXPECT_EQ(base64DecodeLen("TQ=="), 4);
    EXPECT_EQ(base64DecodeLen(""), 1);
    EXPECT_EQ(decoded("TWFu\nTWFu"), "Man");
    EXPECT_EQ(decoded("TWFuT"), "Man");
    EXPECT_EQ(decoded("T"), "");
    EXPECT_EQ(decoded("TWFuTQ TWFu"), "ManM");
}

TEST(Base64, ThePortableKernelMatchesTheOracle) {
    const Cpu::CRestriction portable(Cpu::kPortable);
    checkPath(Base64::kPortableKernel);
}

#if FUNDO_X86_64
TEST(Base64, Avx2MatchesTheOracle) {
    if (!Cpu::has(Cpu::kAvx2)) GTEST_SKIP() << "no AVX2";
    const Cpu::CRestriction narrow(Cpu::kAvx2);
    checkPath(Base64::kAvx2Kernel);
}

TEST(Base64, VbmiMatchesTheOracle) {
    if (!Cpu::has(Cpu::kVbmi)) GTEST_SKIP() << "no AVX-512 VBMI";
    checkPath(Base64::kVbmiKernel);
}
#endif

TEST(Base64, ATextOfSeveralPagesIsReadOverTheirEdges) {
    const Samples::Bytes sample = Samples::bytes(20001);
    const std::string data(sample.begin(), sample.end());
    const std::string coded = encoded(data);
    for (const unsigned features : {Cpu::kAll + 0u, Cpu::kAvx2 + 0u, Cpu::kPortable + 0u}) {
        const Cpu::CRestriction path(features);
        for (size_t shift = 0; shift < 70; ++shift)
            ASSERT_EQ(decoded(std::string(coded).insert(0, shift * 4, 'A')).substr(shift * 3), data) << shift;
        std::string inPlace = coded;
        ASSERT_EQ(base64Decode(inPlace.data(), inPlace.data()), 20001);
        ASSERT_EQ(inPlace.compare(0, data.size(), data), 0);
    }
}

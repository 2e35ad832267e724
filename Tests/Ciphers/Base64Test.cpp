#include "Utils/Base64.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <cstring>

#include "Samples.h"
#include "Support/GuardedBuffer.h"
#include "Utils/Base64/Base64Kernels.h"

using namespace Tovra::Utils;

namespace {

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
        const Tests::CGuardedBuffer data(sample.data(), sample.size());
        std::string expected(static_cast<size_t>((length + 2) / 3 * 4 + 1), '\0');
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(expected.data()), sample.data(), length);
        const Tests::CGuardedBuffer coded(static_cast<size_t>(base64EncodeLen(length)));
        ASSERT_EQ(base64Encode(coded.text(), data.text(), length), static_cast<int>(expected.size()));
        ASSERT_EQ(std::memcmp(coded.data(), expected.data(), expected.size()), 0) << length;

        coded.text()[expected.size() - 1] = '\n';
        const Tests::CGuardedBuffer back(static_cast<size_t>(base64DecodeLen(coded.text())));
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

// A text of several pages, at all distances from their edges, and in place.
void readOverPages() {
    const Samples::Bytes sample = Samples::bytes(20001);
    const std::string data(sample.begin(), sample.end());
    std::string coded(26669, '\0');
    ASSERT_EQ(base64Encode(coded.data(), data.data(), 20001), 26669);
    coded.pop_back();
    for (size_t shift = 0; shift < 70; ++shift)
        ASSERT_EQ(decoded(std::string(coded).insert(0, shift * 4, 'A')).substr(shift * 3), data) << shift;
    ASSERT_EQ(base64Decode(coded.data(), coded.data()), 20001);
    ASSERT_EQ(coded.compare(0, data.size(), data), 0);
}

}  // namespace

TEST(Base64, LengthsAndEndsAreAsPromised) {
    // RFC 4648, section 10
    const char* const vectors[] = {"", "Zg==", "Zm8=", "Zm9v", "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"};
    char coded[9];
    for (int length = 0; length < 7; ++length) {
        EXPECT_EQ(base64Encode(coded, "foobar", length), base64EncodeLen(length));
        EXPECT_STREQ(coded, vectors[length]);
        EXPECT_EQ(decoded(coded), std::string("foobar", static_cast<size_t>(length)));
    }
    EXPECT_EQ(base64Encode(coded, "abc", -3), 1);
    EXPECT_EQ(std::string(coded, 2), std::string("\0m", 2));
    EXPECT_EQ(base64DecodeLen("TQ=="), 4);
    const char* const cut[][2] = {
        {"TWFu\nTWFu", "Man"}, {"TWFuT", "Man"}, {"T", ""}, {"TWFuTQ TWFu", "ManM"}};
    for (const auto& [text, data] : cut)
        EXPECT_EQ(decoded(text), data);
}

TEST(Base64, EachKernelMatchesTheOracle) {
    const std::pair<unsigned, const Base64::Kernel*> paths[] = {
#if FUNDO_X86_64
        {Cpu::kVbmi, &Base64::kVbmiKernel},
        {Cpu::kAvx2, &Base64::kAvx2Kernel},
#endif
        {Cpu::kPortable, &Base64::kPortableKernel}
    };
    for (const auto& [features, kernel] : paths) {
        if (!Cpu::has(features)) continue;
        const Cpu::CRestriction path(features);
        ASSERT_EQ(&Base64::kernel(), kernel);
        compareAllLengths();
        endAtEachCharacter();
        readOverPages();
    }
}

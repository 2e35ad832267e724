#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "Codecs/Oracle.h"
#include "Support/GuardedBuffer.h"
#include "Support/Random.h"
#include "Utils/Unicode.h"

using namespace Tovra::Utils;

namespace {

using Units = std::vector<unsigned short>;

// Sentinel of what must not be written.
constexpr char kUntouched = 0x5a;

// Text that ends right before an inaccessible page.
Tests::CGuardedBuffer guarded(const std::string& text) { return {text.c_str(), text.size() + 1}; }

Units toUnits(const std::string& gb, int room, int expected) {
    Units out(static_cast<size_t>(room), 0x5a5a);
    EXPECT_EQ(Gb2312ToUni(guarded(gb).text(), out.data(), room), expected);
    return out;
}

// The destination as it is left, size + 1 bytes that were all kUntouched.
std::string fromUnits(Units units, int n, int size, int expected) {
    const Tests::CGuardedBuffer dst(static_cast<size_t>(size) + 1);
    std::memset(dst.data(), kUntouched, dst.size());
    EXPECT_EQ(UniTGb2312(units.data(), n, dst.text(), size), expected);
    return std::string(dst.text(), dst.size());
}

TEST(CodePage936, PairsAndUnitsAreThoseOfTheChart) {
    Oracle::Converter toUtf16("UTF-16LE", "CP936"), fromUtf16("CP936", "UTF-16LE");
    int assigned = 0;
    for (unsigned lead = 0; lead < 256; ++lead) {
        for (unsigned second = 0; second < 256; ++second) {
            const std::string pair = {static_cast<char>(lead), static_cast<char>(second)};
            unsigned short unit = 0x5a5a;
            const int length = char2uni(reinterpret_cast<const unsigned char*>(pair.data()), 2, &unit);
            const bool isPair = lead >= 0x81 && lead != 0xff && second != 0;
            // Single bytes that the oracle reads before an ASCII byte come as two units, that is as 0 here.
            const unsigned single = lead == 0x80 ? 0x20ac : lead;
            const unsigned expected = isPair ? Oracle::unitOf(toUtf16, pair) : single;
            ASSERT_EQ(unit, expected) << lead << " " << second;
            ASSERT_EQ(length, !isPair ? 1 : expected != 0 ? 2 : -1);
            assigned += isPair && expected != 0 ? 1 : 0;
        }
    }
    EXPECT_EQ(assigned, 21791);
    for (unsigned value = 0; value < 0x10000; ++value) {
        std::string expected = fromUtf16(Oracle::utf16(value));
        // Latin-1 and no other unit is a single byte here.
        if (value < 0x100)
            expected.assign(value > 0 ? 1 : 0, static_cast<char>(value));
        else if (expected.size() == 1)
            expected.clear();
        unsigned char out[2] = {};
        const int length = uni2char(static_cast<unsigned short>(value), out, 2);
        ASSERT_EQ(length, expected.empty() ? -1 : static_cast<int>(expected.size())) << value;
        ASSERT_TRUE(length < 0 || std::string(out, out + length) == expected) << value;
    }
}

TEST(CodePage936, OneCharacterMindsItsRoom) {
    const unsigned char lead = 0xb0;
    unsigned short unit = 0;
    EXPECT_EQ(char2uni(&lead, 1, &unit), 1);
    EXPECT_EQ(unit, 0xb0);
    EXPECT_EQ(char2uni(&lead, 0, &unit), -1);
    unsigned char byte = 0;
    EXPECT_EQ(uni2char(0xe9, &byte, 1), 1);
    EXPECT_EQ(uni2char(0x4e2d, &byte, 1), -1);
    EXPECT_EQ(uni2char(0x41, &byte, 0), -1);
}

TEST(CodePage936, TextToUnitsIsTerminatedIfThereIsRoom) {
    EXPECT_EQ(toUnits("a\xd6\xd0\x80", 5, 3), (Units{'a', 0x4e2d, 0x20ac, 0, 0}));
    EXPECT_EQ(toUnits("a\xd6\xd0\x80", 3, 3), (Units{'a', 0x4e2d, 0x20ac}));
    EXPECT_EQ(toUnits("\xd6", 2, 1), (Units{0xd6, 0}));
    EXPECT_EQ(Gb2312ToUni(guarded("a").text(), nullptr, 3), 0);
    Units out(3, 0x5a5a);
    EXPECT_EQ(Gb2312ToUni(nullptr, out.data(), 3), 0);
    EXPECT_EQ(out, Units(3, 0));
    EXPECT_EQ(Gb2312ToUni(guarded("a").text(), out.data(), -1), 0);
}

TEST(CodePage936, AnUnassignedPairStepsBackUntilTheUnitsAreFull) {
    EXPECT_EQ(toUnits("ab\x81 c", 7, 7), (Units{'a', 'b', 0, 'b', 0, 'b', 0}));
    // The byte before is the second of a pair, and as a lead byte makes another pair with the bad one.
    EXPECT_EQ(toUnits("\xd6\xd0\x81\x20", 3, 3), (Units{0x4e2d, 0, toUnits("\xd0\x81", 1, 1)[0]}));
    // There is nothing before the first: an inaccessible page, if the buffer is a page.
    EXPECT_EQ(toUnits("\x81\x20" + std::string(4093, 'a'), 4, 4), Units(4, 0));
}

TEST(CodePage936, UnitsToTextFillTheRoomAndOneByteMore) {
    const Units units = {'a', 0x4e2d, 0xe9, 0};
    EXPECT_EQ(fromUnits(units, 9, 6, 3), std::string("a\xd6\xd0\xe9\0\0\x5a", 7));
    EXPECT_EQ(fromUnits(units, 9, 4, 3), std::string("a\xd6\xd0\xe9\0", 5));
    EXPECT_EQ(fromUnits(units, 9, 2, 1), std::string("a\0\x5a", 3));
    EXPECT_EQ(fromUnits(units, 2, 6, 2), std::string("a\xd6\xd0\0\0\0\x5a", 7));
    EXPECT_EQ(fromUnits(units, 0, 2, 0), std::string("\0\0\x5a", 3));
    EXPECT_EQ(fromUnits(units, 9, 0, 0), "\x5a");
    EXPECT_EQ(fromUnits({'a', 0xfffe, 'b', 0}, 3, 2, -1), std::string("a\0\x5a", 3));
    EXPECT_EQ(fromUnits({0, 'a'}, 2, 1, 0), std::string("\0\x5a", 2));
}

// Texts of several pieces, so that vectors, single characters and the seams between them all take part.
Units randomUnits(Support::Random& random) {
    Units units;
    for (auto runs = 1 + random() % 80; runs > 0; --runs) {
        const bool ascii = random() % 2 == 0;
        for (auto run = random() % 40; run > 0; --run)
            units.push_back(
                static_cast<unsigned short>(ascii ? 1 + random() % 127 : 0x4e00 + random() % 0x5000));
    }
    return units;
}

TEST(CodePage936, TextsGoToUtf8AndBack) {
    Support::Random random;
    for (int round = 0; round < 300; ++round) {
        std::string gb, expected;
        const Units units = randomUnits(random);
        for (const unsigned short unit : units) {
            unsigned char pair[2];
            const int length = uni2char(unit, pair, 2);
            ASSERT_GT(length, 0);
            gb.append(pair, pair + length);
            expected += Oracle::utf8(unit);
        }
        const Tests::CGuardedBuffer utf8(expected.size()), back(gb.size() + 1);
        const auto size = static_cast<int>(gb.size()), utf8Size = static_cast<int>(expected.size());
        ASSERT_EQ(Gb2312TUtf8(guarded(gb).text(), utf8.data(), utf8Size), utf8Size);
        ASSERT_EQ(std::string(utf8.text(), utf8.size()), expected);
        ASSERT_EQ(utf8TGb2312(guarded(expected).data(), back.text(), utf8Size, size),
                  static_cast<int>(units.size()));
        ASSERT_EQ(std::string(back.text()), gb);
    }
}

std::string toUtf8(const std::string& gb, int size, int expected) {
    std::string out(40, kUntouched);
    EXPECT_EQ(Gb2312TUtf8(guarded(gb).text(), reinterpret_cast<unsigned char*>(out.data()), size), expected);
    return out.substr(0, out.find(kUntouched));
}

std::string toGb(const std::string& utf8, int limit, int size, int expected) {
    std::string out(40, kUntouched);
    EXPECT_EQ(utf8TGb2312(guarded(utf8).data(), out.data(), limit, size), expected);
    return out.substr(0, out.find(kUntouched));
}

TEST(CodePage936, Utf8LimitsAndBadInput) {
    EXPECT_EQ(toUtf8("a\xd6\xd0", 6, 4), std::string("a\xe4\xb8\xad\0\0", 6));
    EXPECT_EQ(toUtf8("\xd6\xd0\xd6\xd0", 5, 3), std::string("\xe4\xb8\xad\0\0", 5));
    EXPECT_EQ(toUtf8("abcdef", 2, 6), "abcdef");
    EXPECT_EQ(toUtf8("ab\x81 cd", 4, 2), std::string("ab\0\0", 4));
    EXPECT_EQ(toUtf8("", 4, 0), "");
    EXPECT_EQ(toUtf8("ab", 0, 0), "");
    EXPECT_EQ(toGb("a\xe4\xb8\xad\xff!", 9, 5, 3), std::string("a\xd6\xd0!\0", 5));
    EXPECT_EQ(toGb("a\xe4\xb8\xad!", 3, 5, 1), std::string("a\0\0\0\0", 5));
    EXPECT_EQ(toGb("a\xe2\x82\xac", 9, 3, -1), std::string("a\0\0", 3));
    // A value above the plane is cut to its low bits: here to 0, which ends the text.
    EXPECT_EQ(toGb("a\xf0\x90\x80\x80z", 9, 3, 1), std::string("a\0\0", 3));
    EXPECT_EQ(toGb("", 9, 3, 0), "");
    EXPECT_EQ(toGb("\xff", 9, 3, 0), std::string(3, '\0'));

    unsigned char byte = 0;
    char character = 0;
    EXPECT_EQ(Gb2312TUtf8(nullptr, &byte, 1) | Gb2312TUtf8(&character, nullptr, 1), 0);
    EXPECT_EQ(utf8TGb2312(nullptr, &character, 1, 1) | utf8TGb2312(&byte, nullptr, 1, 1), 0);
}

}  // namespace

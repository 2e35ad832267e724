#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <ostream>
#include <string>
#include <vector>

#include "Codecs/Oracle.h"
#include "Support/GuardedBuffer.h"
#include "Utils/Unicode.h"

using namespace Tovra::Utils;

namespace {

const unsigned char* bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.c_str());
}

struct Functions {
    const char* name;
    int (*uni2char)(unsigned short, unsigned char*, int);
    int (*char2uni)(const unsigned char*, int, unsigned short*);
    int (*to_utf8)(unsigned char*, int&, const unsigned char*, int&);
};

// The name of a failed case.
void PrintTo(const Functions& functions, std::ostream* out) { *out << functions.name; }

#define FUNCTIONS(x) \
    { #x, x##_uni2char, x##_char2uni, x##_to_utf8 }
const Functions kCharsets[] = {FUNCTIONS(cp1250),     FUNCTIONS(cp1251),     FUNCTIONS(cp862),
                               FUNCTIONS(cp874),      FUNCTIONS(iso8859_1),  FUNCTIONS(iso8859_2),
                               FUNCTIONS(iso8859_3),  FUNCTIONS(iso8859_4),  FUNCTIONS(iso8859_5),
                               FUNCTIONS(iso8859_6),  FUNCTIONS(iso8859_7),  FUNCTIONS(iso8859_8),
                               FUNCTIONS(iso8859_9),  FUNCTIONS(iso8859_10), FUNCTIONS(iso8859_13),
                               FUNCTIONS(iso8859_14), FUNCTIONS(iso8859_15), FUNCTIONS(iso8859_16)};

class Charsets : public testing::TestWithParam<Functions> {};

TEST_P(Charsets, BytesAndUnitsAreThoseOfTheChart) {
    std::string chart = GetParam().name;
    std::replace(chart.begin(), chart.end(), '_', '-');
    Oracle::Converter toUtf16("UTF-16LE", chart), fromUtf16(chart, "UTF-16LE");
    for (unsigned value = 0; value < 256; ++value) {
        const auto byte = static_cast<unsigned char>(value);
        const unsigned expected = Oracle::unitOf(toUtf16, std::string(1, static_cast<char>(value)));
        unsigned short unit = 0xaaaa;
        EXPECT_EQ(GetParam().char2uni(&byte, 1, &unit), expected != 0 ? 1 : -1) << value;
        EXPECT_EQ(unit, expected) << value;
    }
    for (unsigned value = 0; value < 0x10000; ++value) {
        const std::string expected = value != 0 ? fromUtf16(Oracle::utf16(value)) : "";
        const auto unit = static_cast<unsigned short>(value);
        unsigned char byte = 0x5a;
        ASSERT_EQ(GetParam().uni2char(unit, &byte, 1), expected.empty() ? -1 : 1) << value;
        ASSERT_EQ(byte, expected.empty() ? 0x5a : static_cast<unsigned char>(expected[0])) << value;
        ASSERT_EQ(GetParam().uni2char(unit, &byte, 0), -1);
    }
}

// The rules of char_to_utf8(), as few bytes as they take.
std::string modelToUtf8(const Functions& charset, const std::string& src, size_t room, int& consumed) {
    std::string out;
    for (consumed = 0; consumed < static_cast<int>(src.size()); ++consumed) {
        unsigned short unit = 0;
        if (charset.char2uni(bytes(src) + consumed, 1, &unit) < 0) continue;
        const std::string sequence = Oracle::utf8(unit);
        if (out.size() + sequence.size() > room) break;
        out += sequence;
    }
    return out;
}

TEST_P(Charsets, TextsAreConvertedUpToTheRoomAndNotBeyond) {
    std::string text(300, '\0');
    std::iota(text.begin(), text.end(), '\0');
    const Tests::CGuardedBuffer src(text.data(), text.size());
    for (size_t room = text.size(); room <= 3 * text.size(); ++room) {
        int consumed = 0;
        const std::string expected = modelToUtf8(GetParam(), text, room, consumed);
        const Tests::CGuardedBuffer dst(room);
        for (const bool byName : {true, false}) {
            std::memset(dst.data(), 0x5a, room);
            int dstLen = static_cast<int>(room), srcLen = static_cast<int>(text.size());
            ASSERT_EQ(byName ? GetParam().to_utf8(dst.data(), dstLen, src.data(), srcLen)
                             : char_to_utf8(dst.data(), dstLen, src.data(), srcLen, GetParam().char2uni),
                      0);
            ASSERT_EQ(srcLen, consumed) << room;
            ASSERT_EQ(dstLen, static_cast<int>(expected.size())) << room;
            ASSERT_EQ(std::string(dst.text(), room), expected + std::string(room - expected.size(), 0x5a));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, Charsets, testing::ValuesIn(kCharsets),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(CharToUtf8, RefusesWithoutChangingAnything) {
    unsigned char src[] = "abcd", dst[4] = {};
    const std::tuple<unsigned char*, int, unsigned char*, int> refused[] = {
        {nullptr, 4, src, 4}, {dst, 4, nullptr, 4}, {dst, 4, src, 0}, {dst, 3, src, 4}};
    for (const auto& [out, room, in, size] : refused) {
        int dstLen = room, srcLen = size;
        EXPECT_EQ(iso8859_1_to_utf8(out, dstLen, in, srcLen), -1);
        EXPECT_EQ(char_to_utf8(out, dstLen, in, srcLen, iso8859_1_char2uni), -1);
        EXPECT_TRUE(dstLen == room && srcLen == size && dst[0] == 0);
    }
}

std::string fromCp1252(const std::string& text, int room, int expected) {
    unsigned char out[8];
    std::fill(out, std::end(out), static_cast<unsigned char>(0xff));
    EXPECT_EQ(cp1252_to_utf8(out, room, bytes(text), static_cast<int>(text.size())), expected);
    return std::string(out, std::find(out, std::end(out), 0xff));
}

std::string toCp1252(const std::string& text, size_t size) {
    const Tests::CGuardedBuffer dst(size);
    const int written = utf8_to_cp1252(bytes(text), static_cast<int>(size), dst.data(), 0);
    return std::string(dst.text(), static_cast<size_t>(written));
}

TEST(CodePage1252, BothWaysAgreeWithTheChart) {
    Oracle::Converter toUtf8("UTF-8", "CP1252");
    for (unsigned byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const std::string assigned = toUtf8(text);
        // An undefined byte gives NUL on the way out and comes from its own value on the way back.
        EXPECT_EQ(fromCp1252(text, 3, 0), assigned.empty() ? std::string(1, '\0') : assigned) << byte;
        const std::string utf8 = assigned.empty() ? Oracle::utf8(byte) : assigned;
        EXPECT_EQ(toCp1252(utf8, utf8.size()), byte == 0xff ? "" : text) << byte;
    }
    for (unsigned unit = 0x100; unit < 0x10000; ++unit) {
        const std::string back = toCp1252(Oracle::utf8(unit), Oracle::utf8(unit).size());
        ASSERT_TRUE(back.empty() || toUtf8(back) == Oracle::utf8(unit)) << unit;
    }
    EXPECT_EQ(toCp1252(Oracle::utf8(0x80), 2), "");
}

TEST(CodePage1252, RoomUndefinedBytesAndWhatDoesNotFit) {
    EXPECT_EQ(fromCp1252("\x80z", 3, 4), "");
    EXPECT_EQ(fromCp1252("\x80z", 4, 0), "\xe2\x82\xacz");
    EXPECT_EQ(fromCp1252("a\x81z\x80", 4, 0), std::string("a\0\0\0", 4));
    EXPECT_EQ(fromCp1252("", 4, -1), "");
    unsigned char byte = 0;
    EXPECT_EQ(cp1252_to_utf8(&byte, 1, nullptr, 1), -1);
    EXPECT_EQ(toCp1252("y\xe4\xb8\xadz", 5), "yz");
    EXPECT_EQ(toCp1252("xy\xc3yz", 5), "xy");
    EXPECT_EQ(toCp1252("xy\x80yz", 5), "xy");
    EXPECT_EQ(toCp1252("\xc1\x81\xf8\x80\x80\x81\x82\xfc\x80\x80\x80\x81\x83", 13), "ABC");
    // A sequence that begins inside is read to its end.
    EXPECT_EQ(toCp1252("\xe2\x82\xacz", 1), "\x80");
    EXPECT_EQ(toCp1252("abc", 0), "");
}

}  // namespace

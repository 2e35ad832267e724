#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "Codecs/Oracle.h"
#include "Support/GuardedBuffer.h"
#include "Support/LogCapture.h"
#include "Utils/CpuFeatures.h"
#include "Utils/Unicode.h"

using namespace Tovra::Utils;

namespace {

using Units = std::vector<unsigned short>;

const unsigned char* bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

int decoded(const std::string& text, int n, unsigned* value = nullptr) {
    unsigned short unit = 0x5a5a;
    const int length = utf8_mbtowc(&unit, bytes(text), n);
    if (value != nullptr) *value = unit;
    return length;
}

// Every sequence of three bytes, and with it every one of one and two, against those that a unit has.
TEST(Utf8, OneTwoAndThreeBytesExhaustively) {
    std::vector<int> valueOf(1U << 24, -1);
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const std::string text = Oracle::utf8(unit);
        unsigned key = 0;
        for (const char byte : text)
            key = key << 8 | static_cast<unsigned char>(byte);
        valueOf[key << 8 * (3 - text.size())] = static_cast<int>(unit);

        unsigned char written[4] = {0, 0, 0, 0x5a};
        const int length = static_cast<int>(text.size());
        ASSERT_EQ(utf8_wctomb(written, static_cast<unsigned short>(unit), length), length);
        ASSERT_EQ(std::memcmp(written, text.data(), text.size()), 0) << unit;
        ASSERT_EQ(utf8_wctomb(written, static_cast<unsigned short>(unit), length - 1), -1);
    }
    int failures = 0;
    for (unsigned key = 0; key < 1U << 24; ++key) {
        const unsigned char s[3] = {static_cast<unsigned char>(key >> 16),
                                    static_cast<unsigned char>(key >> 8), static_cast<unsigned char>(key)};
        const unsigned mask = s[0] < 0x80 ? 0xff0000U : s[0] < 0xe0 ? 0xffff00U : 0xffffffU;
        const int expected = valueOf[key & mask];
        unsigned short unit = 0x5a5a;
        const int length = utf8_mbtowc(&unit, s, 3);
        const int expectedLength = expected < 0 ? -1 : mask == 0xff0000U ? 1 : mask == 0xffff00U ? 2 : 3;
        failures += length != expectedLength || unit != (expected < 0 ? 0x5a5a : expected) ? 1 : 0;
    }
    EXPECT_EQ(failures, 0);
}

TEST(Utf8, TruncatedOverlongAndLongForms) {
    EXPECT_EQ(decoded("\xc0\x80", 2), -1);
    EXPECT_EQ(decoded("\xe4\xb8\xad", 2), -1);
    EXPECT_EQ(decoded("\xe4", 1), -1);
    EXPECT_EQ(decoded("a", 0), 1);
    EXPECT_EQ(decoded("\xf0\x8f\xbf\xbf", 4), -1);
    EXPECT_EQ(decoded("\xfe\x80\x80\x80\x80\x80\x80", 7), -1);
    unsigned value = 0;
    EXPECT_EQ(decoded("\xf0\x9f\x98\x80", 4, &value), 4);
    EXPECT_EQ(value, 0xf600u);
    EXPECT_EQ(decoded("\xf8\x88\x80\x81\x82", 5, &value), 5);
    EXPECT_EQ(value, 0x42u);
    EXPECT_EQ(decoded("\xfd\xbf\xbf\xbf\xbf\xbe", 6, &value), 6);
    EXPECT_EQ(value, 0xfffeu);
    EXPECT_EQ(decoded("\xed\xa0\x80", 3, &value), 3);
    EXPECT_EQ(value, 0xd800u);

    unsigned char out[3] = {};
    EXPECT_EQ(utf8_wctomb(out, 0x41, 0), -1);
    EXPECT_EQ(utf8_wctomb(nullptr, 0x41, 0), 0);
    EXPECT_EQ(utf8_wctomb(out, 0x800, 2), -1);
    EXPECT_EQ(utf8_wctomb(out, 0x7ff, 2), 2);
    EXPECT_EQ(utf8_wctomb(out, 0x800, -1), 3);
}

TEST(Utf8, SizeByLeadByte) {
    for (unsigned lead = 0; lead < 256; ++lead) {
        const int expected = lead < 0x80   ? 0
                             : lead < 0xc0 ? -1
                             : lead < 0xe0 ? 2
                             : lead < 0xf0 ? 3
                             : lead < 0xf8 ? 4
                             : lead < 0xfc ? 5
                                           : 6;
        EXPECT_EQ(get_utf8_size(static_cast<unsigned char>(lead)), expected) << lead;
    }
}

TEST(Utf8, OneCharacterOfAString) {
    struct Case {
        const char* text;
        unsigned unit;
        int size;
    };
    const Case cases[] = {
        {"", 0, 0},
        {"a", 'a', 1},
        {"\xc3\xa9", 0xe9, 2},
        {"\xe4\xb8\xad", 0x4e2d, 3},
        {"\xc1\x81", 0x41, 2},     // over-long
        {"\xe4\xb8", 0, 3},        // the text ends inside
        {"\xe4\xb8z", 0x138, 3},   // ASCII inside
        {"\xe4\xc3\xa9", 0x4, 3},  // a lead inside
        {"\xe4\xf0", 0x4, 3},
        {"\x80", 0, 0},
        {"\xf0\x9f\x98\x80", 0, 0},
    };
    for (const Case& one : cases) {
        int size = 99;
        EXPECT_EQ(GetUnicodeFromUtf8(one.text, &size), one.unit) << one.text;
        EXPECT_EQ(size, one.size) << one.text;
    }
}

TEST(Ucs4, AllFormsAtAnyAddressWithinTheRoom) {
    const std::vector<uint32_t> values = {0x41,     0,         0x7ff,     0xffff,     0x1fffff,
                                          0x200000, 0x3ffffff, 0x4000000, 0x7fffffff, 0x80000000};
    const std::string expected(
        "\x41\0\xdf\xbf\xef\xbf\xbf\xf7\xbf\xbf\xbf\xf8\x88\x80\x80\x80"
        "\xfb\xbf\xbf\xbf\xbf\xfc\x84\x80\x80\x80\x80\xfd\xbf\xbf\xbf\xbf\xbf",
        33);
    std::vector<char> shifted(4 * values.size() + 1);
    std::memcpy(shifted.data() + 1, values.data(), 4 * values.size());
    const int length = static_cast<int>(4 * values.size());
    Support::LogCapture log(3);
    const size_t ends[] = {0, 1, 2, 4, 7, 11, 16, 21, 27, 33};
    size_t fitting = 0;
    for (size_t room = 0; room <= expected.size(); ++room) {
        const Tests::CGuardedBuffer out(room);
        if (fitting + 1 < std::size(ends) && ends[fitting + 1] <= room) ++fitting;
        ASSERT_EQ(UCS4ToUtf8(shifted.data() + 1, length, out.data(), static_cast<int>(room)),
                  static_cast<int>(ends[fitting]));
        ASSERT_EQ(std::string(out.text(), ends[fitting]), expected.substr(0, ends[fitting]));
    }
    EXPECT_EQ(log.count("UCS4ToUtf8 utf8Size error\n"), expected.size());
    unsigned char byte = 0;
    EXPECT_EQ(UCS4ToUtf8(nullptr, 4, &byte, 1), 0);
    EXPECT_EQ(log.count("ucs4 is invalid\n"), 1u);
    EXPECT_EQ(UCS4ToUtf8(shifted.data(), 4, nullptr, 1), 0);
    EXPECT_EQ(log.count("utf8 is invalid\n"), 1u);
    EXPECT_EQ(UCS4ToUtf8(shifted.data(), 6, &byte, 1), 0);
    EXPECT_EQ(log.count("UCS4ToUtf8 ucs4Len error\n"), 1u);
    EXPECT_EQ(UCS4ToUtf8(shifted.data(), 0, &byte, 1), 0);
    EXPECT_EQ(log.lines().size(), expected.size() + 3);
}

// The rules of the two string functions, character by character.
Units modelDecode(const std::string& text, int n) {
    Units units;
    for (size_t at = 0; static_cast<int>(at) < n && at < text.size() && text[at] != 0;) {
        unsigned short unit = 0;
        const int length = utf8_mbtowc(&unit, bytes(text) + at, n - static_cast<int>(at));
        if (length > 0) units.push_back(unit);
        at += length > 0 ? static_cast<size_t>(length) : 1;
    }
    return units;
}

std::string modelEncode(const Units& units, int maxlen) {
    std::string out;
    for (const unsigned short unit : units) {
        if (unit == 0 || maxlen < 1) break;
        const std::string sequence = Oracle::utf8(unit);
        const int length = static_cast<int>(sequence.size());
        if (length > maxlen) {
            --maxlen;
            continue;
        }
        out += sequence;
        maxlen -= length > 1 ? length : 0;
    }
    return out;
}

// Runs of one kind, as vectors take them, with faults strewn in.
std::string randomUtf8(std::mt19937& random) {
    static const std::string kOdd[] = {
        "\x80", "\xff", "\xe0\x9f\xbf", "\xe4\xb8", "\xc0\x80", "\xf0\x9f\x98\x80", "\xed\xa0\x80"};
    std::string text;
    for (auto runs = random() % 8; runs > 0; --runs) {
        const auto kind = random() % 4;
        for (auto run = random() % 50; run > 0; --run) {
            if (kind == 0) text += static_cast<char>(1 + random() % 127);
            if (kind == 1) text += Oracle::utf8(static_cast<unsigned>(0x80 + random() % 0x780));
            if (kind == 2) text += Oracle::utf8(static_cast<unsigned>(0x800 + random() % 0xf800));
            if (kind == 3 && run < 3) text += kOdd[random() % std::size(kOdd)];
        }
    }
    return text;
}

// A limit below, at, or beyond the text.
int randomLimit(std::mt19937& random, size_t size) {
    return random() % 2 == 0 ? 1 << 30 : static_cast<int>(random() % (size + 2));
}

void expectStringsFollowTheModel(std::mt19937& random) {
    const std::string text = randomUtf8(random);
    // One that is limited needs no terminator.
    const int n = randomLimit(random, text.size());
    const bool terminated = n > static_cast<int>(text.size());
    const Tests::CGuardedBuffer src(text.size() + (terminated ? 1 : 0));
    std::memcpy(src.data(), text.c_str(), src.size());
    const Units expected = modelDecode(text, n);
    Units units(text.size() + 1, 0x5a5a);
    const int count = utf8_mbstowcs(units.data(), src.data(), n);
    ASSERT_EQ(count, static_cast<int>(expected.size()));
    ASSERT_EQ(Units(units.begin(), units.begin() + count), expected);
    ASSERT_EQ(Units(units.begin() + count, units.end()), Units(units.size() - expected.size(), 0x5a5a));

    const int maxlen = randomLimit(random, text.size());
    const std::string encoded = modelEncode(expected, maxlen);
    const Tests::CGuardedBuffer unitBuffer(2 * expected.size() + 2), dst(encoded.size());
    units = expected;
    units.push_back(0);
    std::memcpy(unitBuffer.data(), units.data(), unitBuffer.size());
    ASSERT_EQ(utf8_wcstombs(dst.data(), reinterpret_cast<unsigned short*>(unitBuffer.data()), maxlen),
              static_cast<int>(encoded.size()));
    ASSERT_EQ(std::string(dst.text(), dst.size()), encoded);
}

TEST(Utf8Strings, FollowTheSingleCharactersWithAndWithoutVectors) {
    for (const unsigned features : {Cpu::kPortable + 0U, Cpu::kAll + 0U}) {
        const Cpu::CRestriction restriction(features);
        ASSERT_EQ(Cpu::has(Cpu::kSsse3), features == Cpu::kAll) << "this processor runs one path alone";
        const unsigned seed = std::random_device{}();
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        for (int round = 0; round < 5000; ++round)
            ASSERT_NO_FATAL_FAILURE(expectStringsFollowTheModel(random)) << "round " << round;
    }
}

TEST(Utf8Strings, TheLimitOfBytesCountsLongSequencesAlone) {
    const Units units = {'a', 0x4e2d, 'b', 0xe9, 'c', 0};
    const auto encoded = [&units](int maxlen) {
        std::string out(16, '\x5a');
        const int size = utf8_wcstombs(reinterpret_cast<unsigned char*>(out.data()), units.data(), maxlen);
        return out.substr(0, static_cast<size_t>(size));
    };
    EXPECT_EQ(encoded(5),
              "a\xe4\xb8\xad"
              "b\xc3\xa9");
    EXPECT_EQ(encoded(6),
              "a\xe4\xb8\xad"
              "b\xc3\xa9"
              "c");
    EXPECT_EQ(encoded(3), "a\xe4\xb8\xad");
    EXPECT_EQ(encoded(2), "ab");
    EXPECT_EQ(encoded(0), "");
    // Units that use the limit up need no terminator.
    for (const size_t count : {size_t{5}, size_t{16}}) {
        const Tests::CGuardedBuffer src(2 * count), dst(3 * count);
        std::memcpy(src.data(), Units(count, 0x4e2d).data(), src.size());
        EXPECT_EQ(utf8_wcstombs(dst.data(), reinterpret_cast<unsigned short*>(src.data()),
                                static_cast<int>(dst.size())),
                  static_cast<int>(dst.size()));
    }
    Units none(1, 0x5a5a);
    EXPECT_EQ(utf8_mbstowcs(none.data(), bytes("abc"), 0), 0);
    EXPECT_EQ(utf8_mbstowcs(none.data(), bytes("abc"), -1), 0);
}

}  // namespace

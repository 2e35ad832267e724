#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "Codecs/Oracle.h"
#include "Support/GuardedBuffer.h"
#include "Support/LogCapture.h"
#include "Support/Random.h"
#include "Utils/CpuFeatures.h"
#include "Utils/Unicode.h"

using namespace Tovra::Utils;

namespace {

using Units = std::vector<unsigned short>;

const unsigned char* bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
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
        const auto length = static_cast<int>(text.size());
        ASSERT_EQ(utf8_wctomb(written, static_cast<unsigned short>(unit), length), length);
        ASSERT_EQ(std::memcmp(written, text.data(), text.size()), 0) << unit;
        ASSERT_EQ(utf8_wctomb(written, static_cast<unsigned short>(unit), length - 1), -1);
    }
    int failures = 0;
    for (unsigned key = 0; key < 1U << 24; ++key) {
        const unsigned char s[3] = {static_cast<unsigned char>(key >> 16),
                                    static_cast<unsigned char>(key >> 8), static_cast<unsigned char>(key)};
        const int size = s[0] < 0x80 ? 1 : s[0] < 0xe0 ? 2 : 3;
        const int expected = valueOf[key & ~(0xffffffU >> 8 * size)];
        unsigned short unit = 0x5a5a;
        const int length = utf8_mbtowc(&unit, s, 3);
        failures += expected < 0 ? length != -1 || unit != 0x5a5a : length != size || unit != expected;
    }
    EXPECT_EQ(failures, 0);
}

TEST(Utf8, TruncatedOverlongAndLongForms) {
    const std::tuple<std::string, int, unsigned> cases[] = {{"\xf0\x8f\xbf\xbf", -1, 0x5a5a},
                                                            {"\xfe\x80\x80\x80\x80\x80\x80", -1, 0x5a5a},
                                                            {"\xf0\x9f\x98\x80", 4, 0xf600},
                                                            {"\xf8\x88\x80\x81\x82", 5, 0x42},
                                                            {"\xfd\xbf\xbf\xbf\xbf\xbe", 6, 0xfffe}};
    for (const auto& [text, length, value] : cases) {
        unsigned short unit = 0x5a5a;
        EXPECT_EQ(utf8_mbtowc(&unit, bytes(text), static_cast<int>(text.size())), length) << value;
        EXPECT_EQ(unit, value);
    }
    unsigned short unit = 0;
    EXPECT_EQ(utf8_mbtowc(&unit, bytes("\xe4\xb8\xad"), 2), -1);
    EXPECT_EQ(utf8_mbtowc(&unit, bytes("a"), 0), 1);
    unsigned char out[3] = {};
    EXPECT_EQ(utf8_wctomb(nullptr, 0x41, 0), 0);
    EXPECT_EQ(utf8_wctomb(out, 0x800, -1), 3);
}

TEST(Utf8, SizeByLeadByte) {
    const int sizes[] = {0,  0,  0,  0,  0,  0,  0,  0,  0, 0, 0, 0, 0, 0, 0, 0,
                         -1, -1, -1, -1, -1, -1, -1, -1, 2, 2, 2, 2, 3, 3, 4, 5};
    for (unsigned lead = 0; lead < 256; ++lead)
        EXPECT_EQ(get_utf8_size(static_cast<unsigned char>(lead)), sizes[lead / 8] + (lead >= 0xfc ? 1 : 0));
}

TEST(Utf8, OneCharacterOfAString) {
    const std::tuple<const char*, unsigned, int> cases[] = {
        {"", 0, 0},
        {"a", 'a', 1},
        {"\xe4\xb8\xad", 0x4e2d, 3},
        {"\xc1\x81", 0x41, 2},     // over-long
        {"\xe4\xb8", 0, 3},        // the text ends inside
        {"\xe4\xb8z", 0x138, 3},   // ASCII inside
        {"\xe4\xc3\xa9", 0x4, 3},  // a lead inside
        {"\x80", 0, 0},
        {"\xf0\x9f\x98\x80", 0, 0},
    };
    for (const auto& [text, unit, length] : cases) {
        int size = 99;
        EXPECT_EQ(GetUnicodeFromUtf8(text, &size), unit) << text;
        EXPECT_EQ(size, length) << text;
    }
}

TEST(Ucs4, AllFormsAtAnyAddressWithinTheRoom) {
    const uint32_t values[] = {0x41,     0,         0x7ff,     0xffff,     0x1fffff,
                               0x200000, 0x3ffffff, 0x4000000, 0x7fffffff, 0x80000000};
    const std::string expected(
        "\x41\0\xdf\xbf\xef\xbf\xbf\xf7\xbf\xbf\xbf\xf8\x88\x80\x80\x80"
        "\xfb\xbf\xbf\xbf\xbf\xfc\x84\x80\x80\x80\x80\xfd\xbf\xbf\xbf\xbf\xbf",
        33);
    char shifted[sizeof values + 1];
    std::memcpy(shifted + 1, values, sizeof values);
    Support::LogCapture log(3);
    const std::vector<size_t> ends = {0, 1, 2, 4, 7, 11, 16, 21, 27, 33};
    for (size_t room = 0; room <= expected.size(); ++room) {
        const Tests::CGuardedBuffer out(room);
        const size_t end = *(std::upper_bound(ends.begin(), ends.end(), room) - 1);
        ASSERT_EQ(UCS4ToUtf8(shifted + 1, sizeof values, out.data(), static_cast<int>(room)),
                  static_cast<int>(end));
        ASSERT_EQ(std::string(out.text(), end), expected.substr(0, end));
    }
    unsigned char byte = 0;
    EXPECT_EQ(UCS4ToUtf8(nullptr, 4, &byte, 1), 0);
    EXPECT_EQ(UCS4ToUtf8(shifted, 4, nullptr, 1), 0);
    EXPECT_EQ(UCS4ToUtf8(shifted, 6, &byte, 1), 0);
    EXPECT_EQ(UCS4ToUtf8(shifted, 0, &byte, 1), 0);
    EXPECT_EQ(log.count("UCS4ToUtf8 utf8Size error\n"), expected.size());
    for (const char* text : {"ucs4 is invalid\n", "utf8 is invalid\n", "UCS4ToUtf8 ucs4Len error\n"})
        EXPECT_EQ(log.count(text), 1u) << text;
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
    for (size_t i = 0; i < units.size() && units[i] != 0 && maxlen > 0; ++i) {
        const std::string sequence = Oracle::utf8(units[i]);
        const int length = static_cast<int>(sequence.size());
        if (length <= maxlen) out += sequence;
        maxlen -= length > maxlen ? 1 : length > 1 ? length : 0;
    }
    return out;
}

// Runs of one kind, as vectors take them, with faults strewn in.
std::string randomUtf8(Support::Random& random) {
    static const char* const kOdd[] = {"\x80",     "\xff",     "\xe0\x9f\xbf",
                                       "\xe4\xb8", "\xc0\x80", "\xf0\x9f\x98\x80"};
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

void expectStringsFollowTheModel(Support::Random& random) {
    const std::string text = randomUtf8(random);
    // Below, at, or beyond the text; one that is limited needs no terminator.
    const auto limit = [&] {
        return random() % 2 == 0 ? 1 << 30 : static_cast<int>(random() % (text.size() + 2));
    };
    const int n = limit(), maxlen = limit();
    const bool terminated = n > static_cast<int>(text.size());
    const Tests::CGuardedBuffer src(text.c_str(), text.size() + (terminated ? 1 : 0));
    const Units expected = modelDecode(text, n);
    Units units(text.size() + 1, 0x5a5a), kept = expected;
    kept.resize(units.size(), 0x5a5a);
    ASSERT_EQ(utf8_mbstowcs(units.data(), src.data(), n), static_cast<int>(expected.size()));
    ASSERT_EQ(units, kept);

    const std::string encoded = modelEncode(expected, maxlen);
    units = expected;
    units.push_back(0);
    const Tests::CGuardedBuffer unitBuffer(units.data(), 2 * units.size()), dst(encoded.size());
    ASSERT_EQ(utf8_wcstombs(dst.data(), reinterpret_cast<unsigned short*>(unitBuffer.data()), maxlen),
              static_cast<int>(encoded.size()));
    ASSERT_EQ(std::string(dst.text(), dst.size()), encoded);
}

TEST(Utf8Strings, FollowTheSingleCharactersWithAndWithoutVectors) {
    for (const unsigned features : {Cpu::kPortable + 0U, Cpu::kAll + 0U}) {
        const Cpu::CRestriction restriction(features);
        ASSERT_EQ(Cpu::has(Cpu::kSsse3), features == Cpu::kAll) << "this processor runs one path alone";
        Support::Random random;
        for (int round = 0; round < 5000; ++round)
            ASSERT_NO_FATAL_FAILURE(expectStringsFollowTheModel(random)) << "round " << round;
    }
}

TEST(Utf8Strings, TheLimitOfBytesCountsLongSequencesAlone) {
    const Units units = {'a', 0x4e2d, 'x', 0xe9, 'y', 0};
    const std::pair<int, const char*> cases[] = {{6, "a\xe4\xb8\xadx\xc3\xa9y"},
                                                 {5, "a\xe4\xb8\xadx\xc3\xa9"},
                                                 {3, "a\xe4\xb8\xad"},
                                                 {2, "ax"},
                                                 {0, ""}};
    for (const auto& [maxlen, expected] : cases) {
        unsigned char out[16] = {};
        EXPECT_EQ(utf8_wcstombs(out, units.data(), maxlen), static_cast<int>(std::strlen(expected)));
        EXPECT_STREQ(reinterpret_cast<char*>(out), expected);
    }
    // Units that use the limit up need no terminator.
    for (const size_t count : {size_t{5}, size_t{16}}) {
        const Tests::CGuardedBuffer src(Units(count, 0x4e2d).data(), 2 * count), dst(3 * count);
        const auto room = static_cast<int>(dst.size());
        EXPECT_EQ(utf8_wcstombs(dst.data(), reinterpret_cast<unsigned short*>(src.data()), room), room);
    }
    unsigned short none = 0;
    EXPECT_EQ(utf8_mbstowcs(&none, bytes("abc"), -1), 0);
}

}  // namespace

// The encodings under their global names, beside the current header.
#include "Fundo/Unicode.h"

#include <gtest/gtest.h>

#include <cstring>

#include "Utils/Unicode.h"

namespace {

// U+4E2D in UTF-8 and in GBK.
unsigned char s_utf8[] = "a\xE4\xB8\xAD";
char s_gb[] = "a\xD6\xD0";

TEST(LegacyUnicode, ConvertsThereAndBackUnderTheGlobalNames) {
    unsigned char utf8[16] = "";
    EXPECT_EQ(Gb2312TUtf8(s_gb, utf8, sizeof utf8), 4);
    EXPECT_EQ(std::memcmp(utf8, s_utf8, 4), 0);
    char gb[16] = "";
    EXPECT_EQ(utf8TGb2312(s_utf8, gb, 4, sizeof gb), 2);
    EXPECT_STREQ(gb, s_gb);

    unsigned short units[4] = {};
    EXPECT_EQ(Gb2312ToUni(s_gb, units, 4), 2);
    EXPECT_EQ(units[1], 0x4E2D);
    EXPECT_EQ(UniTGb2312(units, 2, gb, sizeof gb), 2);
    EXPECT_STREQ(gb, s_gb);
    EXPECT_EQ(utf8_mbstowcs(units, s_utf8, 4), 2);
    EXPECT_EQ(utf8_wcstombs(utf8, units, sizeof utf8), 4);
}

TEST(LegacyUnicode, ConvertsSingleCharacters) {
    unsigned short unit = 0;
    unsigned char bytes[8] = "";
    EXPECT_EQ(utf8_mbtowc(&unit, s_utf8 + 1, 3), 3);
    EXPECT_EQ(unit, 0x4E2D);
    EXPECT_EQ(utf8_wctomb(bytes, unit, 3), 3);
    EXPECT_EQ(uni2char(unit, bytes, 2), 2);
    EXPECT_EQ(char2uni(bytes, 2, &unit), 2);
    EXPECT_EQ(unit, 0x4E2D);
    int length = 0;
    EXPECT_EQ(GetUnicodeFromUtf8(reinterpret_cast<const char*>(s_utf8 + 1), &length), 0x4E2D);
    EXPECT_EQ(length, 3);
    const unsigned char euro = 0x80;
    EXPECT_EQ(cp1252_to_utf8(bytes, sizeof bytes, &euro, 1), 0);
    unsigned char back = 0;
    EXPECT_EQ(utf8_to_cp1252(bytes, 3, &back, 1), 1);
    EXPECT_EQ(back, euro);
}

}  // namespace

// Logarithms, commands, log entries and encodings under their global names.
#include <gtest/gtest.h>

#include <cstring>

#include "Fundo/Log2i.h"
#include "Fundo/PrintLog.h"
#include "Fundo/SystemCall.h"
#include "Fundo/Unicode.h"
#include "Support/LogCapture.h"

namespace {

TEST(LegacyFunctions, RoundLogarithmsDownRunNoCommandAndLog) {
    for (unsigned long bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(log2i(1UL << bit), static_cast<int>(bit));
        EXPECT_EQ(log2i((2UL << bit) - 1), static_cast<int>(bit));
    }
    Support::LogCapture log(6);
    EXPECT_TRUE(log2i(0) == 0 && systemCall(nullptr) == 1);
    logDebug("debug %d\n", 1);
    logLibName(2, "old", "named\n");
    ASSERT_EQ(log.lines().size(), 2U);
    EXPECT_EQ(log.count("[libFundo]") * log.count("debug 1") * log.count("[old]"), 1U);
    unsigned char bytes[] = {0xAB, 0xCD};
    DumpHex(bytes, sizeof bytes);
    EXPECT_EQ(log.count("cd "), 1U);
    EXPECT_EQ(systemCall("true"), -1);
    EXPECT_EQ(log.count("systemcall command:true") * log.count("support system call 'system', line :  "), 1U);
}

TEST(LegacyUnicode, ConvertsThereAndBackUnderTheGlobalNames) {
    unsigned char text[] = "a\xE4\xB8\xAD";  // U+4E2D behind an a, in UTF-8 and in GBK
    char gbk[] = "a\xD6\xD0";
    unsigned char utf8[16] = "";
    EXPECT_TRUE(Gb2312TUtf8(gbk, utf8, sizeof utf8) == 4 && std::memcmp(utf8, text, 4) == 0);
    char gb[16] = "";
    EXPECT_TRUE(utf8TGb2312(text, gb, 4, sizeof gb) == 2 && std::strcmp(gb, gbk) == 0);
    unsigned short units[4] = {};
    EXPECT_TRUE(Gb2312ToUni(gbk, units, 4) == 2 && units[1] == 0x4E2D);
    EXPECT_EQ(UniTGb2312(units, 2, gb, sizeof gb), 2);
    EXPECT_TRUE(utf8_mbstowcs(units, text, 4) == 2 && utf8_wcstombs(utf8, units, sizeof utf8) == 4);
    EXPECT_TRUE(utf8_mbtowc(units, text + 1, 3) == 3 && utf8_wctomb(utf8, units[0], 3) == 3);
    EXPECT_TRUE(uni2char(units[0], utf8, 2) == 2 && char2uni(utf8, 2, units) == 2);
    int length = 0;
    EXPECT_EQ(GetUnicodeFromUtf8("\xE4\xB8\xAD", &length) - length, 0x4E2D - 3);
    const unsigned char euro = 0x80;
    unsigned char back = 0;
    EXPECT_EQ(cp1252_to_utf8(utf8, sizeof utf8, &euro, 1), 0);
    EXPECT_TRUE(utf8_to_cp1252(utf8, 3, &back, 1) == 1 && back == euro);
}

}  // namespace

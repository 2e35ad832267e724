#include "Utils/String.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Support/GuardedBuffer.h"
#include "Support/LogCapture.h"

using namespace Tovra;

namespace {

TEST(BoundedString, AppendAnswersTheAllowanceAndStaysInside) {
    const Tests::CGuardedBuffer buffer(10);
    std::strcpy(buffer.text(), "abc");
    EXPECT_EQ(Utils::strncat(buffer.text(), 10, "xy", 5), 5u);
    EXPECT_STREQ(buffer.text(), "abcxy");
    EXPECT_EQ(Utils::strncat(buffer.text(), 10, "0123456789", 99), 4u);
    EXPECT_STREQ(buffer.text(), "abcxy0123");
    EXPECT_EQ(Utils::strncat(buffer.text(), 10, "z", 1), 0u);
    // A full destination lets n alone decide.
    char room[8] = "abc";
    EXPECT_EQ(Utils::strncat(room, 3, "xyz", 2), 2u);
    EXPECT_STREQ(room, "abcxy");
}

TEST(BoundedString, CopyAlwaysTerminatesAndPads) {
    const Tests::CGuardedBuffer buffer(4);
    EXPECT_EQ(Utils::strncpy(buffer.text(), 4, "abcdef", 10), 3u);
    EXPECT_STREQ(buffer.text(), "abc");
    EXPECT_EQ(Utils::strncpy(buffer.text(), 4, "xyz", 2), 2u);
    EXPECT_STREQ(buffer.text(), "xy");
    EXPECT_EQ(Utils::strncpy(buffer.text(), 1, "abc", 10), 0u);

    char padded[6] = {'#', '#', '#', '#', '#', '#'};
    EXPECT_EQ(Utils::strncpy(padded, 6, "a", 3), 1u);
    EXPECT_EQ(std::string(padded, 6), std::string("a\0\0\0##", 6));
}

TEST(BoundedString, FormatAnswersWhatIsStored) {
    const Tests::CGuardedBuffer buffer(4);
    EXPECT_EQ(Utils::snprintf_x(buffer.text(), 4, "%s", "abcdef"), 3);
    EXPECT_STREQ(buffer.text(), "abc");
    EXPECT_EQ(Utils::snprintf_x(buffer.text(), 4, "%s", "xyz"), 3);
    EXPECT_STREQ(buffer.text(), "xyz");
    EXPECT_EQ(Utils::snprintf_x(buffer.text(), 4, "%s", "ab"), 2);
    EXPECT_STREQ(buffer.text(), "ab");
    EXPECT_EQ(Utils::snprintf_x(buffer.text(), 4, "%c%s", 0, "b"), 0);
    // No wide character of this value exists, so the text cannot be formatted.
    EXPECT_EQ(Utils::snprintf_x(buffer.text(), 4, "%lc", static_cast<wint_t>(0x7fffffff)), 0);
}

int alwaysEqual(const char*, const char*) { return 0; }

TEST(PortableNames, CallTheSystemUntilRepointed) {
    char text[4];
    EXPECT_EQ(Utils::snprintf(text, sizeof text, "%d", 12345), 5);
    EXPECT_STREQ(text, "123");
    EXPECT_EQ(Utils::stricmp("FundO", "fUNDo"), 0);
    EXPECT_LT(Utils::stricmp("a", "B"), 0);
    Utils::stricmp = alwaysEqual;
    EXPECT_EQ(Utils::stricmp("a", "b"), 0);
}

TEST(Address, TextAndValueAreEachOthersInverse) {
    char text[16];
    for (const char* address : {"0.0.0.0", "1.2.3.4", "255.255.255.255", "192.168.0.10"})
        EXPECT_STREQ(Utils::ipToString(Utils::stringToIp(address), text, sizeof text), address);
    const IpAddress ip = Utils::stringToIp("1.2.3.4");
    EXPECT_EQ(ip, __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? 0x01020304u : 0x04030201u);

    const Tests::CGuardedBuffer small(6);
    EXPECT_STREQ(Utils::ipToString(ip, small.text(), 6), "1.2.3");
}

TEST(Address, BadTextLogsAndGivesWhatWasRead) {
    EXPECT_EQ(Utils::stringToIp("300.1.1.1"), Utils::stringToIp("44.1.1.1"));
    EXPECT_EQ(Utils::stringToIp("-1.1.1.1"), Utils::stringToIp("255.1.1.1"));
    Support::LogCapture log(3);
    EXPECT_EQ(Utils::stringToIp("1.2.3"), Utils::stringToIp("1.2.3.0"));
    EXPECT_EQ(log.count("param str 1.2.3 is invalid\n"), 1u);
    EXPECT_EQ(Utils::stringToIp(nullptr), 0u);
    EXPECT_EQ(log.count("param str (null) is invalid\n"), 1u);
    EXPECT_EQ(Utils::stringToIp("x"), 0u);
    EXPECT_EQ(Utils::stringToIp("1.2.3.4 and more"), Utils::stringToIp("1.2.3.4"));
    EXPECT_EQ(log.lines().size(), 3u);
}

}  // namespace

// The old date class beside the current one, and the record of stages.
#include "Fundo/Time.h"

#include <gtest/gtest.h>
#include <time.h>

#include <cstdlib>
#include <random>
#include <string>

#include "Fundo/Fundo3/Time.h"
#include "Fundo/TimeRecord.h"
#include "Support/LogCapture.h"

using Current = Tovra::Fundo::CTime;
using Support::LogCapture;

namespace {

void setZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
}

std::string text(const CTime& time, const char* pattern) {
    char buffer[128];
    time.format(buffer, pattern);
    return buffer;
}

TEST(LegacyTime, FollowsTheCLibraryThroughAllItsZones) {
    std::mt19937_64 random(20240229);
    for (const char* zone : {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "NST3:30NDT,M3.2.0,M11.1.0"}) {
        setZone(zone);
        for (int i = 0; i < 2000; ++i) {
            const time_t seconds = static_cast<time_t>(86400 + random() % 4000000000U);
            tm expected;
            localtime_r(&seconds, &expected);
            const CTime time(static_cast<unsigned long long>(seconds));
            ASSERT_EQ(time.year, expected.tm_year + 1900) << zone << ' ' << seconds;
            ASSERT_EQ(time.month, expected.tm_mon + 1);
            ASSERT_EQ(time.day, expected.tm_mday);
            ASSERT_EQ(time.wday, expected.tm_wday);
            ASSERT_EQ(time.hour, expected.tm_hour);
            ASSERT_EQ(time.minute, expected.tm_min);
            ASSERT_EQ(time.second, expected.tm_sec);
            expected.tm_isdst = -1;
            ASSERT_EQ(time.makeTime(), static_cast<unsigned long long>(mktime(&expected)));
        }
    }
}

TEST(LegacyTime, NormalisesItsFieldsAndNeverGoesBelowTheEpoch) {
    setZone("UTC0");
    EXPECT_EQ(text(CTime(2023, 14, 31, 25, 61, 61), "yyyy-MM-dd HH:mm:ss"), "2024-03-03 02:02:01");
    EXPECT_EQ(CTime(2024, 2, 29, 0, 0, 0).wday, 4);
    EXPECT_EQ(CTime(1950, 1, 1, 0, 0, 0).makeTime(), 0U);
    EXPECT_EQ((CTime(100ULL) - 200).makeTime(), 0U);
    EXPECT_EQ(CTime(2024, 3, 1, 0, 0, 0) - CTime(2024, 2, 1, 0, 0, 0), 29 * 86400);
    EXPECT_EQ(CTime(2024, 2, 1, 0, 0, 0) - CTime(2024, 3, 1, 0, 0, 0), -29 * 86400);
    EXPECT_EQ(text(CTime(2024, 2, 28, 23, 59, 59) + 1, "MM-dd"), "02-29");
    EXPECT_TRUE(CTime::minTime < CTime::maxTime);
    EXPECT_TRUE(CTime::minTime >= CTime(2000, 1, 1, 0, 0, 0));

    CTime outOfRange;
    outOfRange.breakTime(~0ULL / 4);
    EXPECT_EQ(outOfRange.year, 0) << "a time that the platform cannot break changes nothing";

    const Current before = Current::getCurrentTime();
    const CTime now = CTime::getCurrentTime();
    EXPECT_GE(now.year * 12 + now.month, before.year * 12 + before.month);
    EXPECT_EQ(now.wday, CTime(now.makeTime()).wday);
}

struct FormatCase {
    const char* pattern;
    const char* byOrder[3];  // year-month-day, month-day-year, day-month-year
};

TEST(LegacyTime, WritesTheDateInTheOrderSetAndLeavesOutWhatIsAbsent) {
    setZone("UTC0");
    const CTime time(2024, 3, 5, 13, 7, 9);
    const FormatCase cases[] = {
        {"yyyy-MM-dd HH:mm:ss", {"2024/03/05 1:07:09", "03/05/2024 1:07:09", "05/03/2024 1:07:09"}},
        {"HH:mm", {"1:07", "1:07", "1:07"}},
        {"dd", {"05", "05", "05"}},
        {"yyyy.dd.y", {"2024/05/", "05/2024/", "05/2024/"}},
        {"d M", {"3 5", "3 5", "5 3"}},
        {"yy/M/d d", {"24/3/05 ", "3/05/24 ", "05/3/24 "}},
        {"H h m s t", {"1 1 7 9 PM", "1 1 7 9 PM", "1 1 7 9 PM"}},
    };
    for (int order = 0; order < 3; ++order) {
        CTime::setFormat(order, 2, 1);
        for (const FormatCase& c : cases) {
            std::string expected = c.byOrder[order];
            if (std::string(c.pattern).find("HH") != std::string::npos)
                expected.insert(expected.find("1:07"), "0");
            EXPECT_EQ(text(time, c.pattern), expected) << c.pattern << " order " << order;
        }
    }
    EXPECT_EQ(text(CTime(2024, 1, 1, 0, 0, 0), "h t"), "12 AM");
    CTime::setFormat(0, 1, 0);
    EXPECT_EQ(text(time, "HH:mm  ttx"), "13:07x") << "without the 12-hour clock t takes blanks back";
}

TEST(LegacyTime, ReadsItsSettingsOffAPatternAndPassesItOn) {
    LogCapture log(3);
    CTime::setFormat("dd.MM.yyyy hh:mm");
    EXPECT_EQ(CTime::getFormat(), "dd.MM.yyyy hh:mm");
    EXPECT_EQ(Current::getFormat(), "dd.MM.yyyy hh:mm");
    EXPECT_EQ(CTime::getDateFormat(), 2);
    EXPECT_EQ(CTime::getSpliter(), '.');
    EXPECT_EQ(CTime::getDateSeparator(), 0);
    EXPECT_TRUE(CTime::get12Hour());
    EXPECT_EQ(CTime::getTimeFormat(), 1);
    EXPECT_EQ(log.lines().size(), 0U);

    CTime::setFormat(1, 7, 7);
    EXPECT_EQ(CTime::getDateFormat(), 1);
    EXPECT_EQ(CTime::getSpliter(), '.') << "other numbers leave the separator";
    EXPECT_TRUE(CTime::get12Hour());
    EXPECT_EQ(Current::getDateFormat(), 2) << "numbers stay in the old class";

    CTime::setFormat("HHmm");
    EXPECT_EQ(CTime::getDateFormat(), 0);
    EXPECT_EQ(CTime::getDateSeparator(), 1);
    for (const char* line : {", setFormat separator is invalid,set default separator: - ",
                             ", setFormat dateFormat is invalid,set default separator: ymd "})
        EXPECT_EQ(log.count(line), 2U) << "one of each class: " << line;
    EXPECT_EQ(log.count("[Src/Time:"), 2U);
}

TEST(LegacyTime, FormatRefusesNullsWithALine) {
    LogCapture log(3);
    char buffer[8] = "same";
    CTime::minTime.format(nullptr, "yyyy");
    CTime::minTime.format(buffer, nullptr);
    EXPECT_STREQ(buffer, "same");
    EXPECT_EQ(log.count(", buf is NULL!!"), 1U);
    EXPECT_EQ(log.count(", format is NULL!!"), 1U);
}

TEST(LegacyTimeRecord, LogsEachStageOnceTheThresholdHasPassed) {
    LogCapture log(4);
    CTimeRecord record("Load");
    record.stat(0);
    EXPECT_EQ(log.lines().size(), 0U) << "one entry has nothing before it";
    record.stat(3600000000U, "open");
    EXPECT_EQ(log.lines().size(), 0U);
    CTime::sleep(2);
    record.stat(1000, "read");
    EXPECT_EQ(log.count("Load-open : "), 1U);
    EXPECT_EQ(log.count("Load-read : "), 1U);
    record.stat(0);
    EXPECT_EQ(log.count("Load-open : "), 2U) << "entries are kept";
    EXPECT_EQ(log.count("Load-(null) : "), 1U);
}

}  // namespace

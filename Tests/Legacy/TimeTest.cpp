// The old date class beside the current one, and the record of stages.
#include "Fundo/Time.h"

#include <gtest/gtest.h>
#include <time.h>

#include <climits>
#include <cstdlib>
#include <random>
#include <string>

#include "Fundo/Fundo3/Time.h"
#include "Fundo/TimeRecord.h"
#include "Support/LogCapture.h"

using Current = Tovra::Fundo::CTime;

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
            char shown[32];
            strftime(shown, sizeof shown, "%Y-%m-%d %H:%M:%S", &expected);
            ASSERT_EQ(text(time, "yyyy-MM-dd HH:mm:ss"), shown) << zone << ' ' << seconds;
            ASSERT_EQ(time.wday, expected.tm_wday);
            expected.tm_isdst = -1;
            ASSERT_EQ(time.makeTime(), static_cast<unsigned long long>(mktime(&expected)));
        }
    }
}

TEST(LegacyTime, NormalisesItsFieldsAndNeverGoesBelowTheEpoch) {
    setZone("UTC0");
    EXPECT_EQ(text(CTime(2023, 14, 31, 25, 61, 61), "yyyy-MM-dd HH:mm:ss"), "2024-03-03 02:02:01");
    for (const CTime& time :
         {CTime(1950, 1, 1, 0, 0, 0), CTime(INT_MIN, INT_MIN, 1, 0, 0, 0), CTime(9ULL) - 10})
        EXPECT_TRUE(time.year == 1970 && time.makeTime() == 0);
    CTime outOfRange;
    outOfRange.breakTime(~0ULL / 4);
    for (const CTime& time : {CTime(9ULL) - LLONG_MIN, CTime(9ULL) + LLONG_MAX, outOfRange})
        EXPECT_EQ(time.year, 0) << "the platform has no such time";
    EXPECT_EQ(CTime(2024, 2, 1, 0, 0, 0) - CTime(2024, 3, 1, 0, 0, 0), -29 * 86400);
    EXPECT_EQ(text(CTime(2024, 2, 28, 23, 59, 59) + 1, "MM-dd"), "02-29");
    EXPECT_TRUE(CTime::minTime < CTime::maxTime && CTime::minTime >= CTime(2000, 1, 1, 0, 0, 0));

    EXPECT_NEAR(static_cast<double>(CTime::getCurrentTime().makeTime()), static_cast<double>(time(nullptr)),
                86400);
}

TEST(LegacyTime, WritesTheDateInTheOrderSetAndLeavesOutWhatIsAbsent) {
    setZone("UTC0");
    const CTime time(2024, 3, 5, 13, 7, 9);
    // The pattern, then its text as year-month-day, month-day-year and day-month-year.
    const char* const cases[][4] = {
        {"yyyy-MM-dd HH:mm:ss", "2024/03/05 01:07:09", "03/05/2024 01:07:09", "05/03/2024 01:07:09"},
        {"HH:mm", "01:07", "01:07", "01:07"},
        {"yyyy.dd.y", "2024/05/", "05/2024/", "05/2024/"},
        {"d M", "3 5", "3 5", "5 3"},
        {"yy/M/d d", "24/3/05 ", "3/05/24 ", "05/3/24 "},
        {"H h m s t", "1 1 7 9 PM", "1 1 7 9 PM", "1 1 7 9 PM"},
    };
    for (int order = 0; order < 3; ++order) {
        CTime::setFormat(order, 2, 1);
        for (const auto& row : cases)
            EXPECT_EQ(text(time, row[0]), row[order + 1]) << row[0] << " order " << order;
    }
    EXPECT_EQ(text(CTime(2024, 1, 1, 0, 0, 0), "h t"), "12 AM");
    CTime::setFormat(0, 1, 0);
    EXPECT_EQ(text(time, "HH:mm  ttx"), "13:07x") << "without the 12-hour clock t takes blanks back";
}

TEST(LegacyTime, ReadsItsSettingsOffAPatternAndPassesItOn) {
    Support::LogCapture log(3);
    CTime::setFormat("dd.MM.yyyy hh:mm");
    EXPECT_EQ(CTime::getFormat() + Current::getFormat(), "dd.MM.yyyy hh:mmdd.MM.yyyy hh:mm");
    EXPECT_TRUE(CTime::getDateFormat() == 2 && CTime::getDateSeparator() == 0 && CTime::getTimeFormat() == 1);
    EXPECT_EQ(log.lines().size(), 0U);
    CTime::setFormat(1, 7, 7);
    EXPECT_TRUE(CTime::getDateFormat() == 1 && CTime::getSpliter() == '.' && CTime::get12Hour());
    EXPECT_EQ(Current::getDateFormat(), 2) << "numbers stay in the old class";
    CTime::setFormat("HHmm");
    EXPECT_TRUE(CTime::getDateFormat() == 0 && CTime::getDateSeparator() == 1);
    EXPECT_EQ(log.count(", setFormat separator is invalid,set default separator: - "), 2U) << "by each class";
    EXPECT_EQ(log.count(", setFormat dateFormat is invalid,set default separator: ymd "), 2U);
    char buffer[8] = "same";
    CTime::minTime.format(nullptr, "yyyy");
    CTime::minTime.format(buffer, nullptr);
    EXPECT_STREQ(buffer, "same");
    EXPECT_EQ(log.count(", buf is NULL!!") * log.count(", format is NULL!!"), 1U);
}

TEST(LegacyTimeRecord, LogsEachStageOnceTheThresholdHasPassed) {
    Support::LogCapture log(4);
    CTimeRecord record("Load");
    record.stat(0);
    record.stat(3600000000U, "open");
    EXPECT_EQ(log.lines().size(), 0U) << "one entry has nothing before it";
    CTime::sleep(2);
    record.stat(1000, "read");
    EXPECT_EQ(log.count("Load-open : ") + log.count("Load-read : "), 2U);
    record.stat(0);
    EXPECT_EQ(log.count("Load-open : ") * log.count("Load-(null) : "), 2U) << "entries are kept";
}

}  // namespace

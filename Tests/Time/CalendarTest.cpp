#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <random>
#include <tuple>

#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Utc.h"

using namespace Tovra::Fundo;

namespace {

constexpr uint64_t kDay = 86400;
constexpr uint64_t kLastExactDay = 47814;  // 2100-11-29

SystemTime broken(uint64_t seconds) {
    SystemTime time{};
    time.isdst = 77;
    seconds_to_time(seconds, time);
    EXPECT_EQ(time.isdst, 77);
    return time;
}

SystemTime make(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    return {year, month, day, -5, hour, minute, second, 3};
}

auto dateOf(const SystemTime& time) { return std::tie(time.year, time.month, time.day); }
auto timeOf(const SystemTime& time) { return std::tie(time.hour, time.minute, time.second); }

// The C library's calendar as the model, with the weekday's own rule after 2099.
void expectDate(uint64_t seconds) {
    const auto time = static_cast<time_t>(seconds);
    tm model{};
    gmtime_r(&time, &model);
    const SystemTime ours = broken(seconds);
    const int year = model.tm_year + 1900;
    ASSERT_EQ(dateOf(ours), std::make_tuple(year, model.tm_mon + 1, model.tm_mday)) << seconds;
    ASSERT_EQ(timeOf(ours), std::tie(model.tm_hour, model.tm_min, model.tm_sec)) << seconds;
    ASSERT_EQ(ours.wday, year < 2100 ? model.tm_wday : (model.tm_wday + 1) % 7) << seconds;
}

}  // namespace

TEST(Calendar, AgreesWithTheCalendarAtTheEdgesOfEachDayUntil2100AndThenLagsADay) {
    for (uint64_t day = 0; day <= kLastExactDay; ++day) {
        for (const uint64_t second : {uint64_t{0}, uint64_t{1}, uint64_t{3599}, kDay / 2, kDay - 1})
            expectDate(day * kDay + second);
    }
    EXPECT_EQ(dateOf(broken((kLastExactDay + 1) * kDay)), std::make_tuple(2100, 11, 29));
    EXPECT_EQ(dateOf(broken((kLastExactDay + 33) * kDay)), std::make_tuple(2100, 12, 31));
    // Days are counted in 32 bits, whatever the time.
    EXPECT_EQ(broken((uint64_t{1} << 32) * kDay).year, 1970);
    broken(~uint64_t{0});
}

TEST(Calendar, RoundTripsUntilTheYearThatSecondsAreClampedTo) {
    std::mt19937_64 random(20240305);
    std::uniform_int_distribution<uint64_t> seconds(0, 2177452799);
    for (int i = 0; i < 200000; ++i) {
        const uint64_t wanted = seconds(random);
        ASSERT_EQ(time_to_seconds(broken(wanted)), wanted);
    }
}

TEST(Calendar, ClampsBothWaysAlike) {
    struct {
        SystemTime given, counted;
    } const cases[] = {
        {make(2039, 6, 15), make(2038, 6, 15)},
        {make(1969, 6, 15), make(1970, 6, 15)},
        {make(2023, 2, 29), make(2023, 2, 28)},
        {make(2024, 2, 29), make(2024, 2, 29)},
        {make(2024, 2, 30), make(2024, 2, 28)},
        {make(2024, 4, 31), make(2024, 4, 30)},
        {make(2024, 1, 0), make(2024, 1, 1)},
        {make(2024, 13, 40), make(2024, 12, 31)},
        {make(2024, -1, -1), make(2024, 1, 1)},
        {make(2024, 5, 5, 24, 5, 0), make(2024, 5, 5, 23, 59, 59)},
        {make(2024, 5, 5, -1, 70, 7), make(2024, 5, 5, 0, 59, 7)},
        {make(2024, 5, 5, 1, -3, 99), make(2024, 5, 5, 1, 0, 59)},
    };
    for (const auto& [given, counted] : cases) {
        EXPECT_EQ(time_to_seconds(given), time_to_seconds(counted));
        SystemTime normal = given;
        normalize_time(normal);
        EXPECT_EQ(dateOf(normal), dateOf(counted));
        EXPECT_EQ(timeOf(normal), timeOf(counted));
        EXPECT_EQ(normal.isdst, 3);
        EXPECT_EQ(normal.wday, broken(time_to_seconds(given)).wday);
    }
    EXPECT_EQ(time_to_seconds(make(9999, 99, 99, 99)), 2177452799U);
    EXPECT_EQ(Date_to_weekday(2100, 1, 1), 6);  // a Friday, told one too high
    EXPECT_EQ(Date_to_weekday(1, 1, 1), -6);    // far before, the remainder keeps its sign
}

TEST(Calendar, ReadsTheSystemsZoneEastAndWest) {
    setenv("TZ", "EAST-8", 1);
    EXPECT_EQ(get_timezone(), -28800);
    SystemTime time{};
    utc_to_time(0, time);
    EXPECT_EQ(time.hour, 8);
    EXPECT_EQ(time_to_utc(time), 0U);
    EXPECT_EQ(CTime(0ULL).hour, 8);
    EXPECT_EQ(CTime(0ULL, false).hour, 0);
    EXPECT_EQ(CTime(1970, 1, 1, 8, 0, 0).makeTime(), 0U);
    // The declared zone is another matter.
    EXPECT_TRUE(CTime::setTimeZone(3600));
    EXPECT_EQ(CTime::getTimeZone(), -28800);
    setenv("TZ", "WEST5WEDT", 1);
    EXPECT_EQ(get_timezone(), -28800) << "the zone is read once";
}

TEST(Calendar, ReadsAZoneWithDaylightSavingWithoutIt) {
    setenv("TZ", "WEST5WEDT", 1);
    EXPECT_EQ(CTime::getTimeZone(), 18000);
    EXPECT_EQ(CTime(18000ULL).day, 1);
}

TEST(Calendar, NeverAsksForTheZoneOnceItIsOff) {
    setenv("TZ", "EAST-8", 1);
    EXPECT_EQ(CTime::disableTimezone(), 0);
    EXPECT_EQ(get_timezone(), 0);
    EXPECT_NE(::timezone, -28800) << "the zone of the C library was read";
    EXPECT_EQ(CTime(0ULL).hour, 0);
}

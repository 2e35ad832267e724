// The clock of the machine is never moved: settimeofday is replaced for this program and the library alike.

#include <gtest/gtest.h>
#include <sys/time.h>

#include <cstdlib>
#include <vector>

#include "Fundo/Fundo3/Error.h"
#include "Fundo/Fundo3/SystemCall.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Utc.h"
#include "Support/LogCapture.h"

using namespace Tovra::Fundo;

namespace {

std::vector<timeval> s_set;
bool s_refuse = false;
bool s_zoneGiven = false;

}  // namespace

extern "C" __attribute__((visibility("default"))) int settimeofday(const timeval* time,
                                                                   const struct timezone* zone) noexcept {
    s_zoneGiven |= zone != nullptr;
    if (s_refuse) return -1;
    s_set.push_back(*time);
    return 0;
}

namespace {

const CTime kTarget(2030, 1, 2, 3, 4, 5);
constexpr int64_t kTargetUtc = 1893553445;

int hardwareClockWritten(const char* command) { return std::string("hwclock -w") == command ? 0 : -2; }

int s_hooked = 0;
void countHook(const CTime& time, int tolerance) { s_hooked += time.year * 10 + tolerance; }
void countHookEx(const SystemTimeEx& time, int) {
    s_hooked += time.wday + time.millisecond + time.reserved[2];
}

// Attached before main: no initialiser of the library may undo it.
const auto s_former = CTime::attachSetCurrentTimeHook(&countHook);

class SystemClock : public testing::Test {
protected:
    SystemClock() { s_setTimeHook = s_former; }
};

struct Listeners {
    std::vector<std::string> called;
    bool first(SystemTime time) {
        called.push_back("first " + std::to_string(time.year));
        CTime::attachModifyProc({&Listeners::second, this});
        return false;
    }
    bool second(SystemTime) {
        called.emplace_back("second");
        return true;
    }
};

}  // namespace

TEST_F(SystemClock, IsSetToTheBoundedTimeAndLogged) {
    setSystemCallHandler(&hardwareClockWritten);
    Support::LogCapture log(4);
    EXPECT_TRUE(CTime::setCurrentTimeEx(kTarget, 0));
    EXPECT_EQ(log.lines().size(), 2U);
    EXPECT_EQ(log.count(" info Time setSysCurrentTime "), 2U);
    EXPECT_EQ(log.count(" CTime::setCurrentTime to 2030-01-02 03:04:05\n"), 1U);
    EXPECT_EQ(log.count(" CTime::setCurrentTime() success without callback function\n"), 1U);
    EXPECT_TRUE(CTime::setCurrentTime(SystemTimeEx{2030, 2, 31, 0, 3, 4, 5, 678, 1, {1, 2, 3}}, 0));
    EXPECT_EQ(log.count(" CTime::setCurrentTimeEx to 2030-02-28 03:04:05:0678\n"), 1U);
    CTime::setCurrentTime(CTime(1999, 12, 31, 23, 59, 59), 0);
    setSysCurrentTime(CTime(2038, 6, 1, 0, 0, 0), 0);
    const time_t february = kTargetUtc + (31 + 26) * 86400;
    const time_t first = static_cast<time_t>(CTime::timeToSeconds(CTime::minTime));
    const time_t last = static_cast<time_t>(CTime::timeToSeconds(CTime::maxTime));
    const timeval wanted[] = {{kTargetUtc, 0}, {february, 678000}, {first, 0}, {last, 0}};
    ASSERT_EQ(s_set.size(), 4U);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(s_set[i].tv_sec, wanted[i].tv_sec + get_timezone());
        EXPECT_EQ(s_set[i].tv_usec, wanted[i].tv_usec);
    }
    EXPECT_FALSE(s_zoneGiven);
}

TEST_F(SystemClock, StaysWithinTheTolerance) {
    const CTime now = CTime::getCurrentTime();
    EXPECT_TRUE(CTime::setCurrentTimeEx(now + 5, 5));
    EXPECT_TRUE(CTime::setCurrentTimeEx(now - 5, 8));
    EXPECT_TRUE(s_set.empty());
    CTime::setCurrentTimeEx(now + 20, 5);
    CTime::setCurrentTimeEx(now - 20, 5);
    EXPECT_EQ(s_set.size(), 2U);
    // The difference to the far past is taken to the bound.
    CTime::setCurrentTimeEx(CTime(1970, 1, 1, 0, 0, 0), static_cast<int>(now - CTime::minTime) + 5);
    EXPECT_EQ(s_set.size(), 2U);
}

TEST_F(SystemClock, FailuresAnswerThroughTheLastError) {
    Support::LogCapture log(4);
    EXPECT_FALSE(CTime::setCurrentTimeEx(kTarget, 0)) << "nobody writes the hardware clock";
    EXPECT_EQ(getLastError(), 0x1000000F);
    EXPECT_EQ(s_set.size(), 1U);
    EXPECT_EQ(log.count("CTime::setCurrentTime(): hwclock -w failed\n"), 1U);
    EXPECT_EQ(log.count("CTime::setCurrentTime()  rtc time set function failed\n"), 1U);
    setLastError(0);
    s_refuse = true;
    Listeners listeners;
    CTime::attachModifyProc({&Listeners::first, &listeners});
    EXPECT_FALSE(CTime::setCurrentTimeEx(kTarget, 0));
    EXPECT_EQ(getLastError(), 0x1000000E);
    EXPECT_TRUE(listeners.called.empty());
    s_refuse = false;
    EXPECT_FALSE(CTime::setCurrentTimeEx(kTarget, 0)) << "the old error still answers";
    setLastError(0);
    EXPECT_TRUE(CTime::setCurrentTimeEx(kTarget, 0)) << "with a listener the hardware clock is no error";
}

TEST_F(SystemClock, ListenersMayAttachListenersForTheNextChange) {
    setSystemCallHandler(&hardwareClockWritten);
    Listeners listeners;
    CTime::attachModifyProc({&Listeners::first, &listeners});
    CTime::setCurrentTime(CTime(2050, 1, 1, 0, 0, 0), 0);
    EXPECT_EQ(listeners.called, std::vector<std::string>{"first 2038"});
    CTime::setCurrentTime(kTarget, 0);
    EXPECT_EQ(listeners.called, (std::vector<std::string>{"first 2038", "first 2030", "second"}));
}

TEST(ClockHooks, ReplaceTheSettersFromBeforeMain) {
    EXPECT_TRUE(s_former == (TFunction2<void, const CTime&, int>(&setSysCurrentTime)));
    CTime::setCurrentTime(kTarget, 3);
    EXPECT_EQ(s_hooked, 20303);
    EXPECT_TRUE(CTime::setCurrentTimeEx(kTarget, 4));
    CTime::attachSetCurrentTimeHookEx(&countHookEx);
    s_hooked = 0;
    EXPECT_TRUE(CTime::setCurrentTime(SystemTimeEx{2024, 3, 5, 0, 0, 0, 0, 500, 0, {9, 9, 9}}, 0));
    EXPECT_EQ(s_hooked, 502);
    EXPECT_TRUE(s_set.empty());
    s_setTimeHook = s_former;
    CTime::setCurrentTime(kTarget, 0);
    EXPECT_EQ(s_set.size(), 1U);
}

TEST_F(SystemClock, DeclaredZoneAndSavingAreKeptApartFromLocalTime) {
    EXPECT_EQ(CTime::getDst(), -1);
    CTime::UTCTimeDef utc{1, 2, 3};
    EXPECT_FALSE(CTime::getUTCForEmbed(utc));
    EXPECT_FALSE(CTime::setTimeZone(-43201) || CTime::setTimeZone(50401));
    EXPECT_EQ(s_TimeZoneDiffSec, 0xFFFFFFF);
    EXPECT_TRUE(CTime::setTimeZone(-43200) && CTime::setTimeZone(50400));
    EXPECT_FALSE(CTime::getUTCForEmbed(utc));
    EXPECT_EQ(utc.utc, 1U);
    CTime::setDst(false);
    const uint64_t winter = CTime::getCurrentUTCtime();
    CTime::setDst(true);
    EXPECT_NEAR(static_cast<double>(winter - CTime::getCurrentUTCtime()), 3600, 2);
    EXPECT_EQ(CTime::getCurrentTime().isdst, 1);
    EXPECT_EQ(get_current_local_time().isdst, -1);
    ASSERT_TRUE(CTime::getUTCForEmbed(utc));
    EXPECT_EQ(utc.timezone, 50400);
    EXPECT_EQ(utc.dst, 1);
    EXPECT_EQ(utc.utc, time_to_seconds(CTime::getCurTimeForPrint()) - 50400 - 3600);

    Support::LogCapture log(2);
    EXPECT_EQ(CTime::getTimeZonefromTable(35), 50400);
    EXPECT_EQ(CTime::getTimeZonefromTable(36) + CTime::getTimeZonefromTable(-1), 0);
    EXPECT_EQ(log.count(", CTime::getTimeZonefromTable, zoneIndex error : -1\n"), 1U);
}

TEST_F(SystemClock, PrintTimeIsTheLocalTimeAndFollowsAChangeAtOnce) {
    const CTime before = CTime::getCurrentTime();
    const CTime print = CTime::getCurTimeForPrint();
    const CTime after = CTime::getCurrentTime();
    EXPECT_TRUE(before <= print && print <= after);
    EXPECT_EQ(print.wday, before.wday);
    EXPECT_LT(CTime::getCurrentTimeEx().millisecond, 1000);
    // The text kept for log lines is dropped once the clock has been set.
    setenv("TZ", "EAST-14", 1);
    ::tzset();
    CTime::setCurrentTime(kTarget, 0);
    EXPECT_GT(CTime::getCurTimeForPrint() - print, 3600);
}

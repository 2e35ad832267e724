// Dates from seconds and back.
//
// The estimate of the year divides by 365 and is corrected by the leap days so far, which are counted as one
// every fourth year: that is the whole of the lag after 2100-11-29.
#include "Fundo/Fundo3/Utc.h"

#include "Fundo3/Time/Calendar.h"

namespace Tovra::Fundo {

namespace {

constexpr uint64_t kSecondsPerDay = 86400;
constexpr int32_t kDaysPerYear = 365;
constexpr int kFirstYear = 1970;
constexpr int kLastYear = 2038;

struct DayOfYear {
    int32_t year;
    int32_t day;  // from 0
};

DayOfYear splitDays(int32_t days) {
    const int32_t years = days / kDaysPerYear;
    const int32_t rest = days - kDaysPerYear * years;
    const int32_t leapDays = (years + 1) / 4;
    if (rest >= leapDays) return {kFirstYear + years, rest - leapDays};
    const int32_t year = kFirstYear - 1 + years;
    return {year, rest + kDaysPerYear + (Detail::isLeap(year) ? 1 : 0) - leapDays};
}

void setMonthAndDay(DayOfYear date, SystemTime& time) {
    constexpr int32_t kLeapDay = 59;
    int32_t day = date.day;
    if (day >= kLeapDay && Detail::isLeap(date.year)) {
        if (day == kLeapDay) {
            time.month = 2;
            time.day = 29;
            return;
        }
        --day;
    }
    // No month is longer than 32 days, so the guess is right or one too low.
    int month = Detail::clamp(day / 32 + 1, 1, 12);
    if (month < 12 && day >= Detail::kDaysBefore[month]) ++month;
    time.month = month;
    time.day = day + 1 - Detail::kDaysBefore[month - 1];
}

int32_t clampedDay(int year, int month, int day) {
    if (day < 1) return 1;
    const int32_t length = Detail::kMonthLength[month - 1];
    if (day <= length) return day;
    // Contract: only the 29th is looked up in the calendar; February 30 falls back to the 28th in any year.
    return day == 29 && month == 2 && Detail::isLeap(year) ? 29 : length;
}

}  // namespace

void seconds_to_time(unsigned long long seconds, SystemTime& time) {
    const auto days = static_cast<int32_t>(static_cast<uint32_t>(seconds / kSecondsPerDay));
    const auto rest = static_cast<int32_t>(seconds % kSecondsPerDay);
    const DayOfYear date = splitDays(days);
    time.year = date.year;
    setMonthAndDay(date, time);
    time.wday = Detail::weekday(time.year, time.month, time.day);
    time.hour = rest / 3600;
    time.minute = rest % 3600 / 60;
    time.second = rest % 60;
}

unsigned long long time_to_seconds(const SystemTime& time) {
    const int year = Detail::clamp(time.year, kFirstYear, kLastYear);
    const int month = Detail::clamp(time.month, 1, 12);
    constexpr int32_t kDaysBefore1970 = kDaysPerYear * kFirstYear + 1;
    const int32_t days = Detail::daysBeforeMonth(year, month) + kDaysPerYear * year + (year - 1968) / 4 +
                         clampedDay(year, month, time.day) - kDaysBefore1970;
    const uint64_t midnight = static_cast<uint64_t>(days) * kSecondsPerDay;
    if (time.hour > 23) return midnight + kSecondsPerDay - 1;
    const int32_t ofDay = (time.hour < 0 ? 0 : time.hour) * 3600 + Detail::clamp(time.minute, 0, 59) * 60 +
                          Detail::clamp(time.second, 0, 59);
    return midnight + static_cast<uint64_t>(ofDay);
}

void utc_to_time(unsigned long long utc, SystemTime& time) {
    seconds_to_time(utc - static_cast<uint64_t>(get_timezone()), time);
}

unsigned long long time_to_utc(const SystemTime& time) {
    return time_to_seconds(time) + static_cast<uint64_t>(get_timezone());
}

void normalize_time(SystemTime& time) {
    time.year = Detail::clamp(time.year, kFirstYear, kLastYear);
    time.month = Detail::clamp(time.month, 1, 12);
    time.day = clampedDay(time.year, time.month, time.day);
    time.wday = Detail::weekday(time.year, time.month, time.day);
    if (time.hour > 23) {
        time.hour = 23;
        time.minute = 59;
        time.second = 59;
        return;
    }
    time.hour = time.hour < 0 ? 0 : time.hour;
    time.minute = Detail::clamp(time.minute, 0, 59);
    time.second = Detail::clamp(time.second, 0, 59);
}

int Date_to_weekday(int year, int month, int day) {
    // Bounded, so that no sum passes 32 bits.
    constexpr int kFar = 400000000;
    return Detail::weekday(Detail::clamp(year, -kFar, kFar), Detail::clamp(month, 1, 12),
                           Detail::clamp(day, -kFar, kFar));
}

}  // namespace Tovra::Fundo

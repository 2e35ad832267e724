#pragma once

#include <cstdint>

// What the conversions of dates share.

namespace Tovra::Fundo::Detail {

// Days of a common year before the month, and its length.
inline constexpr int32_t kDaysBefore[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
inline constexpr int32_t kMonthLength[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

constexpr bool isLeap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

template <typename T>
constexpr T clamp(T value, T low, T high) {
    return value < low ? low : (value > high ? high : value);
}

// Days of the year before a date whose month is 1 to 12, less the leap day that a date before March has not
// seen yet although the count of leap years has.
constexpr int32_t daysBeforeMonth(int year, int month) {
    return kDaysBefore[month - 1] - (month < 3 && isLeap(year) ? 1 : 0);
}

// Contract: every fourth year counts as leap, so the answer is one too high from 2100-01-01 on; and a negative
// sum stays negative.
constexpr int weekday(int year, int month, int day) {
    const int64_t sum =
        int64_t{year} + day + (int64_t{year} - 1968) / 4 + daysBeforeMonth(year, month) - 1967;
    return static_cast<int>(sum % 7);
}

}  // namespace Tovra::Fundo::Detail

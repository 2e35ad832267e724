#pragma once

#include <cstdint>
#include <string>

#include "Fundo/Fundo3/Export.h"

/// A date and time of day in the platform's local time, to the second: the C library's mktime() and
/// localtime_r() with a text. It knows nothing of the zones and limits of Tovra::Fundo::CTime.
///
/// A plain value: threads share one like an int. The format settings are process-wide and meant for start-up.
class FUNDO_API CTime {
public:
    int year = 0;    ///< such as 2024
    int month = 0;   ///< 1 to 12
    int day = 0;     ///< 1 to 31
    int wday = 0;    ///< 0 Sunday to 6
    int hour = 0;    ///< 0 to 23
    int minute = 0;  ///< 0 to 59
    int second = 0;  ///< 0 to 59

    static const CTime minTime;  ///< 2000-01-01 00:00:00
    static const CTime maxTime;  ///< 2038-01-01 00:00:00

    /// All fields 0.
    CTime() = default;
    /// The local time of seconds since 1970 in UTC.
    CTime(unsigned long long time);
    /// The fields, normalised: minute 75 is a quarter past the next hour. A date before 1970 in UTC gives
    /// that of 0 seconds.
    CTime(int year, int month, int day, int hour, int minute, int second);

    /// This local time as seconds since 1970 in UTC; 0 before that. Fields out of range count on.
    unsigned long long makeTime() const;
    /// Becomes the local time of seconds since 1970 in UTC; stays as it is if the platform has none.
    void breakTime(unsigned long long time);

    /// So many seconds later. All fields are 0 where the platform has no such time.
    CTime operator+(long long seconds) const;
    /// So many seconds earlier; not before 1970 in UTC.
    CTime operator-(long long seconds) const;
    /// Seconds from the other time to this one.
    long long operator-(const CTime& other) const;

    bool operator<(const CTime& other) const { return makeTime() < other.makeTime(); }    ///< By makeTime().
    bool operator<=(const CTime& other) const { return makeTime() <= other.makeTime(); }  ///< By makeTime().
    bool operator>(const CTime& other) const { return makeTime() > other.makeTime(); }    ///< By makeTime().
    bool operator>=(const CTime& other) const { return makeTime() >= other.makeTime(); }  ///< By makeTime().
    bool operator==(const CTime& other) const { return makeTime() == other.makeTime(); }  ///< By makeTime().
    bool operator!=(const CTime& other) const { return makeTime() != other.makeTime(); }  ///< By makeTime().

    /// The local date and time, as Tovra::Fundo::CTime::getCurrentTime().
    static CTime getCurrentTime();
    /// Tovra::Fundo::CTime::setCurrentTime() with the fields as they stand.
    static void setCurrentTime(const CTime& time, int toleranceSeconds);
    /// Milliseconds since boot.
    static uint64_t getCurrentMilliSecond();
    /// Microseconds since boot.
    static uint64_t getCurrentMicroSecond();
    /// Sleeps at least ms milliseconds; 0 or less only yields.
    static void sleep(int ms);

    /// Sets the display format of this class and that of Tovra::Fundo::CTime; see setFormat() there for what
    /// follows from the pattern. Each of the two logs what the pattern lacks.
    static void setFormat(std::string format);
    /// Sets the display format of this class by numbers; the pattern stays.
    /// @param dateFormat 0 year, month, day; 1 month, day, year; 2 day, month, year
    /// @param separator  0 ".", 1 "-", 2 "/"; others leave it
    /// @param hour12     1 for the 12-hour clock, 0 for the other; others leave it
    static void setFormat(int dateFormat, int separator, int hour12);
    /// The pattern last set; "yyyy-MM-dd HH:mm:ss" at first.
    static std::string getFormat();
    /// The order of the date: 0, 1 or 2, or what setFormat() was given.
    static int getDateFormat();
    /// 2 for "/", 1 for "-", 0 for any other separator.
    static int getDateSeparator();
    /// The separator.
    static char getSpliter();
    /// Whether the 12-hour clock is on.
    static bool get12Hour();
    /// 1 with the 12-hour clock, else 0.
    static int getTimeFormat();

    /// Writes this time by a pattern, in the language of Tovra::Fundo::CTime with the settings of this class.
    /// Parts of the date that the pattern lacks are left out, and the others move up.
    ///
    /// No length is checked: a field is as wide as its value, up to 11 characters, and all else as in the
    /// pattern.
    /// @param buffer null writes nothing and logs the error "[source:line] tid:id, buf is NULL!!\n"
    /// @param format null writes nothing and logs the error "[source:line] tid:id, format is NULL!!\n"
    void format(char* buffer, const char* format) const;

private:
    constexpr CTime(int newYear, int weekday) : year(newYear), month(1), day(1), wday(weekday) {}
};

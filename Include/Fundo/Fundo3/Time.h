#pragma once

#include <time.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"
#include "Fundo/Fundo3/SystemTime.h"

/// @file
/// Date values with their pattern language, and the system's clocks. The arithmetic is Utc.h's, with its
/// clamping and limits.

namespace Tovra::Fundo {

class CTime;

/// A row of the table of zones as time servers number them.
struct NtpTimeZone {
    int32_t index;     ///< the row's own number
    int32_t offset;    ///< seconds east of UTC
    const char* name;  ///< such as "GMT+05:45"
};

/// Number of rows of g_ntp_timezone_table.
inline constexpr int kNtpTimeZones = 36;

/// Zones by number. Rows 33 to 35 stand behind the ordered ones.
extern FUNDO_API const NtpTimeZone g_ntp_timezone_table[kNtpTimeZones];

/// Reads a clock. Any thread.
/// @param clockId 0 time since boot, which setting the time of day does not touch; -1 time since the first
/// such call
/// @return 0, or the system's error number for a clock it does not have
FUNDO_API int clock_gettime(int clockId, timespec* ts);

/// The local date and time, as CTime::getCurrentTime() but with isdst always -1. Any thread.
FUNDO_API CTime get_current_local_time();

/// Sets the system's clock to a local time and tells the listeners; what s_setTimeHook calls unless replaced.
///
/// The time is first bounded to CTime::minTime and CTime::maxTime. Nothing at all happens if it is within the
/// tolerance of the present time. Otherwise the clock is set, logged as
/// "CTime::setCurrentTime to %04d-%02d-%02d %02d:%02d:%02d\n", systemCall("hwclock -w") asks for the hardware
/// clock to be written (a failure logs "CTime::setCurrentTime(): hwclock -w failed\n"), and each listener is
/// called in this thread, in the order of attaching, with no lock held.
///
///   last error   set when                                      then
///   0x1000000E   the system refused to set its clock           no listener is called
///   0x1000000F   the hardware clock was not written and no     the system's clock has been changed, and
///                listener is attached                          "CTime::setCurrentTime()  rtc time set
///                                                              function failed\n" is logged
///
/// @param toleranceSeconds 0 sets the clock in any case
FUNDO_API void setSysCurrentTime(const CTime& time, int toleranceSeconds);

/// The same to the millisecond; what s_setTimeHookEx calls unless replaced. The date is clamped first, the
/// milliseconds are not: the system refuses those above 999. Logs "CTime::setCurrentTimeEx to …:%04d\n".
FUNDO_API void setSysCurrentTimeEx(const SystemTimeEx& time, int toleranceSeconds);

/// What CTime's setters call to set the clock. Replaced at start-up only; a replacement reports failure by
/// setLastError() with the codes of setSysCurrentTime().
extern FUNDO_API TFunction2<void, const CTime&, int> s_setTimeHook;
/// The same for the setter that takes milliseconds.
extern FUNDO_API TFunction2<void, const SystemTimeEx&, int> s_setTimeHookEx;

/// A date and time of day to the second, its arithmetic, its text, and the system's clocks.
///
/// A plain value: threads share one like an int. The format settings are process-wide and meant for start-up;
/// a change while others format shows in their next texts.
///
/// Patterns
///
/// In a pattern the letters y, M and d are placeholders: the first run of them prints the first field of the
/// date order, whatever its letter, the next run the second, and so on. The letters say which fields exist
/// and how wide they are, counted over the whole pattern. The order is the process-wide one unless flag 2
/// asks for the pattern's own.
///
///   in the pattern       printed
///   - . /                the process-wide separator, everywhere; the character itself with flag 1
///   run of y, M or d     the next field of the date; a fourth run prints nothing
///                        year: yyy or more four digits, y and yy two; month, day: one letter as short as
///                        it goes, more letters two digits
///   run of h or H        the hour: one letter as short as it goes, more two digits
///   run of m, of s       minute, second, likewise
///   run of t             AM or PM with the 12-hour clock; else nothing, and blanks before it are taken back
///   anything else        itself
///
/// The 12-hour clock is the process-wide choice; with flag 4 it is on if the pattern holds an h. Fields are
/// printed as they stand, also out of range.
class FUNDO_API CTime : public SystemTime {
public:
    /// What a stream needs to carry a time.
    struct UTCTimeDef {
        uint64_t utc;      ///< seconds since 1970 in UTC
        int32_t timezone;  ///< seconds east of UTC
        int32_t dst;       ///< 0 or 1
    };

    /// Flags of format(): what comes from the pattern instead of the process-wide settings.
    enum FormatFlags {
        ownSeparator = 1,  ///< separators
        ownOrder = 2,      ///< date order
        own12Hour = 4      ///< 12-hour clock
    };

    static const CTime minTime;  ///< 2000-01-01 00:00:00, the earliest time that the clock is set to
    static const CTime maxTime;  ///< 2038-01-01 00:00:00, the latest

    /// All fields 0, daylight saving unknown.
    CTime();
    /// The local time of seconds since 1970 in UTC.
    CTime(unsigned long long time);
    /// The same, or with no zone applied.
    CTime(unsigned long long time, bool toLocal);
    /// The fields, clamped by normalize_time(); daylight saving unknown.
    CTime(int year, int month, int day, int hour, int minute, int second);

    /// This local time as seconds since 1970 in UTC.
    unsigned long long makeTime() const;
    /// Becomes the local time of seconds since 1970 in UTC; isdst stays.
    void breakTime(unsigned long long time);
    /// time_to_seconds().
    static unsigned long long timeToSeconds(const SystemTime& time);

    /// So many seconds later; the fields count clamped, isdst of the result is -1.
    CTime operator+(long long seconds) const;
    /// So many seconds earlier.
    CTime operator-(long long seconds) const;
    /// Moves this time; isdst stays.
    CTime& operator+=(long long seconds);
    /// Moves this time back; isdst stays.
    CTime& operator-=(long long seconds);
    /// Seconds from the other time to this one.
    long long operator-(const CTime& other) const;

    /// Compares year to second as they stand; wday and isdst never count. The others follow from it.
    bool operator<(const CTime& other) const;
    bool operator==(const CTime& other) const;                               ///< See operator<.
    bool operator>(const CTime& other) const { return other < *this; }       ///< See operator<.
    bool operator<=(const CTime& other) const { return !(other < *this); }   ///< See operator<.
    bool operator>=(const CTime& other) const { return !(*this < other); }   ///< See operator<.
    bool operator!=(const CTime& other) const { return !(*this == other); }  ///< See operator<.

    /// Sets the process-wide display format. From the pattern follow
    ///
    ///   separator      "." if it holds one, else "/", else "-"; without any, the error "[source:line]
    ///   tid:id,
    ///                  setFormat separator is invalid,set default separator: - \n" and "-"
    ///   12-hour clock  on if it holds an h
    ///   date order     of the first y, M and d, a missing letter counting as last: year-month-day,
    ///                  month-day-year or day-month-year; for another, the error "…, setFormat dateFormat is
    ///                  invalid,set default separator: ymd \n" and year-month-day
    ///
    /// @param format null counts as empty
    static void setFormatString(const char* format);
    /// The same.
    static void setFormat(const std::string& format);
    /// The pattern last set, also a bad one; "yyyy-MM-dd HH:mm:ss" at first.
    static std::string getFormat();
    /// Date order: 0 year-month-day, 1 month-day-year, 2 day-month-year.
    static int getDateFormat();
    /// Whether the 12-hour clock is on.
    static bool get12Hour();
    /// The date separator.
    static char getSeparator();

    /// Writes this time by a pattern. Nothing is allocated.
    ///
    /// No length is checked: a field is as wide as its value, up to 11 characters, and all else as in the
    /// pattern. Prefer the overload that takes a size.
    /// @param buf null logs the error "[source:line] tid:id, buf is NULL!!\n"
    /// @param flags see FormatFlags
    void format(char* buf, const char* format, int flags) const;
    /// Writes at most size bytes, terminator included; nothing if size is 0. Nothing is allocated.
    /// @return the length of the whole text; one of size or above was cut
    size_t format(char* buf, size_t size, const char* format, int flags) const;
    /// This time as text.
    std::string format(const char* format, int flags = 0) const;

    /// Reads six numbers, in the order that the pattern's letters give the date, then hour, minute, second.
    /// What stands between numbers is not looked at; a text that does not begin with a digit loses its first
    /// number. A pattern without a valid order leaves the date as it was. A pattern with an h wants "AM" or
    /// "PM" anywhere in the text. The result is clamped by normalize_time().
    ///
    /// @param flags not used
    /// @return false with the six fields 0 and an error logged behind "[source:line] this:address tid:id, ":
    ///   "CTime parser input information is not enough.\n", fewer than six numbers
    ///   "CTime parser input hour format is not accord with real value format.\n", 13 or more with an h
    ///   "12 hours time point is unclear.\n", an h, but neither AM nor PM
    bool parse(const char* buf, const char* format, int flags);

    /// The local date and time; isdst as declared by setDst(), else the system's. Any thread.
    static CTime getCurrentTime();
    /// The same with milliseconds.
    static SystemTimeEx getCurrentTimeEx();
    /// Seconds since 1970, less 3600 if setDst() declared daylight saving.
    static uint64_t getCurrentUTCtime();
    /// The same in milliseconds.
    static uint64_t getCurrentUTCMilliSecond();
    /// The local time for log lines, up to 0.4 s old: cheaper than converting. Any thread.
    static CTime getCurTimeForPrint();
    /// Fills a record from getCurTimeForPrint() and the declared zone.
    /// @return false, with the record untouched, until setTimeZone() and setDst() have been called
    static bool getUTCForEmbed(UTCTimeDef& utc);

    /// Milliseconds since boot; never goes back, and does not jump when the time of day is set. Any thread.
    /// @return 0, logged, if the system has no such clock
    static uint64_t getCurrentMilliSecond();
    /// The same clock in microseconds.
    static uint64_t getCurrentMicroSecond();

    /// Sets the clock through s_setTimeHook, after clamping; the next log line shows the new time.
    /// @param toleranceSeconds see setSysCurrentTime()
    static void setCurrentTime(const CTime& time, int toleranceSeconds);
    /// The same; log lines follow within 0.4 s.
    /// @return false if this thread's last error is now 0x1000000E or 0x1000000F. The hook does not clear it:
    /// an older error of these answers too
    static bool setCurrentTimeEx(const CTime& time, int toleranceSeconds);
    /// Sets the clock through s_setTimeHookEx, with milliseconds and without clamping here.
    /// @return as setCurrentTimeEx()
    static bool setCurrentTime(const SystemTimeEx& time, int toleranceSeconds);

    /// Attaches a listener to changes of the clock, for good; equal ones are called twice. Its result is
    /// ignored. Any thread, also from a listener: it is then called from the next change on.
    /// @return true
    static bool attachModifyProc(TFunction1<bool, SystemTime> proc);
    /// Replaces s_setTimeHook; at start-up only. @return the former one
    static TFunction2<void, const CTime&, int> attachSetCurrentTimeHook(
        TFunction2<void, const CTime&, int> hook);
    /// Replaces s_setTimeHookEx; at start-up only. @return the former one
    static TFunction2<void, const SystemTimeEx&, int> attachSetCurrentTimeHookEx(
        TFunction2<void, const SystemTimeEx&, int> hook);

    /// Declares the zone that getUTCForEmbed() tells. Local time does not change: that follows the system.
    /// @param seconds east of UTC, -43200 to 50400
    /// @return false, with nothing changed, outside of these
    static bool setTimeZone(int seconds);
    /// The system's zone in seconds west of UTC: get_timezone(), not what setTimeZone() declared.
    static int64_t getTimeZone();
    /// Seconds east of UTC of a row of g_ntp_timezone_table.
    /// @return 0 outside the table, with the error "[source:line] tid:id, CTime::getTimeZonefromTable,
    /// zoneIndex error : %d\n"
    static int getTimeZonefromTable(int zoneIndex);
    /// Declares daylight saving. @return true
    static bool setDst(bool dst);
    /// What setDst() declared, -1 if it was never called.
    static int getDst();
    /// disable_timezone(). @return 0
    static int disableTimezone();

private:
    constexpr explicit CTime(const SystemTime& fields) : SystemTime(fields) {}
};

}  // namespace Tovra::Fundo

#pragma once

#include <cstdint>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/SystemTime.h"

/// @file
/// Seconds since 1970 to dates and back, by the library's own arithmetic: it allocates nothing, takes no lock
/// and asks the system for nothing but the zone. No function reports an error: what is out of range is
/// clamped. Any thread may call any of them.

namespace Tovra::Fundo {

/// Offset from UTC in seconds, east positive, that CTime::setTimeZone() declared; 0xFFFFFFF until then. The
/// functions of this header never read it.
extern FUNDO_API int32_t s_TimeZoneDiffSec;
/// Daylight saving as CTime::setDst() declared it: 0 no, 1 yes, -1 until then.
extern FUNDO_API int32_t s_isdst;

/// Breaks seconds since 1970-01-01 00:00:00 down, with no zone applied. isdst is left as it was.
///
/// Exact up to 2100-11-29; from the day after on, and again with each century that has no leap day, the date
/// stands a day behind the calendar. The weekday is right to the end of 2099.
FUNDO_API void seconds_to_time(unsigned long long seconds, SystemTime& time);

/// Seconds since 1970-01-01 00:00:00, with no zone applied, of a record whose fields are first clamped:
///
///   year    1970 to 2038
///   month   1 to 12
///   day     1 to the length of the month in a common year, and February 29 in a leap year. A day past that
///           is the common length: February 30 counts as the 28th, also in a leap year
///   hour    below 0 is 0; above 23 makes it 23:59:59, whatever minute and second say
///   minute, second  0 to 59
///
/// wday and isdst do not count.
FUNDO_API unsigned long long time_to_seconds(const SystemTime& time);

/// seconds_to_time() of the local time: UTC less get_timezone().
FUNDO_API void utc_to_time(unsigned long long utc, SystemTime& time);
/// time_to_seconds() of a local time as UTC: with get_timezone() added.
FUNDO_API unsigned long long time_to_utc(const SystemTime& time);

/// Clamps a record in place as time_to_seconds() does and computes its wday. isdst is not touched.
FUNDO_API void normalize_time(SystemTime& time);

/// The day of the week, 0 Sunday to 6 Saturday, right from 1968 to the end of 2099; negative far before.
/// @param year, day  not checked
/// @param month      1 to 12; another month is read as the nearest
FUNDO_API int Date_to_weekday(int year, int month, int day);

/// Seconds west of UTC of the system's zone (TZ or /etc/localtime), without daylight saving: -28800 for a
/// zone eight hours east. The zone is read from the system at the first call. 0 after disable_timezone().
FUNDO_API int64_t get_timezone();

/// Makes get_timezone() answer 0 from now on; there is no way back.
FUNDO_API void disable_timezone();

}  // namespace Tovra::Fundo

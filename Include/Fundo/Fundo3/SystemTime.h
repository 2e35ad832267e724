#pragma once

#include <cstdint>

namespace Tovra::Fundo {

/// A broken-down date and time. A plain record; nothing in it is checked or kept consistent.
struct SystemTime {
    int32_t year;    ///< in full, such as 2024
    int32_t month;   ///< 1 to 12
    int32_t day;     ///< 1 to 31
    int32_t wday;    ///< 0 Sunday to 6 Saturday
    int32_t hour;    ///< 0 to 23
    int32_t minute;  ///< 0 to 59
    int32_t second;  ///< 0 to 59
    int32_t isdst;   ///< daylight saving: -1 unknown, 0 no, above 0 yes
};

/// A broken-down date and time with milliseconds. The first seven fields lie as in SystemTime.
struct SystemTimeEx {
    int32_t year;         ///< in full, such as 2024
    int32_t month;        ///< 1 to 12
    int32_t day;          ///< 1 to 31
    int32_t wday;         ///< 0 Sunday to 6 Saturday
    int32_t hour;         ///< 0 to 23
    int32_t minute;       ///< 0 to 59
    int32_t second;       ///< 0 to 59
    int32_t millisecond;  ///< 0 to 999
    int32_t isdst;        ///< daylight saving: -1 unknown, 0 no, above 0 yes
    int32_t reserved[3];  ///< written as zero
};

}  // namespace Tovra::Fundo

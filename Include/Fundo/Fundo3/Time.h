#pragma once

#include <time.h>

#include <cstdint>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/SystemTime.h"

namespace Tovra::Fundo {

/// Reads a clock. Any thread.
/// @param clockId 0 time since boot, which setting the time of day does not touch; -1 time since the first
/// such call
/// @return 0, or the system's error number for a clock it does not have
FUNDO_API int clock_gettime(int clockId, timespec* ts);

/// A date and time of day, and the clocks.
class FUNDO_API CTime : public SystemTime {
public:
    /// All fields 0, daylight saving unknown.
    CTime();

    /// The local date and time. Any thread.
    static CTime getCurrentTime();

    /// Milliseconds since boot; never goes back, and does not jump when the time of day is set. Any thread.
    /// @return 0, logged, if the system has no such clock
    static uint64_t getCurrentMilliSecond();
    /// The same clock in microseconds.
    static uint64_t getCurrentMicroSecond();
};

}  // namespace Tovra::Fundo

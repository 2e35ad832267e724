#pragma once

#include <time.h>

#include <cstdint>

namespace Tovra::Fundo::Platform {

// The clock of timers, waits and deadlines: time since boot, of at least microsecond resolution, which
// never steps when the time of day is set. @return 0, or the system's error number with ts untouched
int readSystemClock(timespec* ts);

// A high-resolution clock for elapsed times, in nanoseconds from an arbitrary start.
uint64_t elapsedNanoSecond();

}  // namespace Tovra::Fundo::Platform

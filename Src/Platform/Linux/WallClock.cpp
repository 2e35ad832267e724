#include "Platform/WallClock.h"

#include <sys/time.h>

#include <ctime>

namespace Tovra::Fundo::Platform {

void readZone() { ::tzset(); }

int64_t secondsWest() { return ::timezone; }

bool setTimeOfDay(uint64_t seconds, int64_t microseconds) {
    timeval time{};
    time.tv_sec = static_cast<time_t>(seconds);
    time.tv_usec = microseconds;
    // The C library refuses a zone together with a time.
    return ::settimeofday(&time, nullptr) == 0;
}

}  // namespace Tovra::Fundo::Platform

#pragma once

#include <cstdint>

namespace Tovra::Fundo::Platform {

// Reads the zone of the process from the system (TZ or /etc/localtime).
void readZone();

// Seconds west of UTC of the zone that was read, without daylight saving.
int64_t secondsWest();

// Sets the time of day, as UTC since 1970. @return whether the system allowed it
bool setTimeOfDay(uint64_t seconds, int64_t microseconds);

}  // namespace Tovra::Fundo::Platform

#include "Platform/Clock.h"

#include <cerrno>

namespace Tovra::Fundo::Platform {

namespace {

// CLOCK_MONOTONIC always exists, so whoever does not ask for the error has none to miss.
uint64_t monotonic(uint64_t unitsPerSecond, uint64_t nanosecondsPerUnit) {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * unitsPerSecond +
           static_cast<uint64_t>(now.tv_nsec) / nanosecondsPerUnit;
}

}  // namespace

int readSystemClock(timespec* ts) { return ::clock_gettime(CLOCK_MONOTONIC, ts) == 0 ? 0 : errno; }

uint64_t monotonicMilliSecond() { return monotonic(1000, 1000000); }

uint64_t monotonicMicroSecond() { return monotonic(1000000, 1000); }

uint64_t elapsedNanoSecond() { return monotonic(1000000000, 1); }

}  // namespace Tovra::Fundo::Platform

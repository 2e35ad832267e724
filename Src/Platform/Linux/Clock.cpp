#include "Platform/Clock.h"

#include <cerrno>

namespace Tovra::Fundo::Platform {

int readSystemClock(timespec* ts) { return ::clock_gettime(CLOCK_MONOTONIC, ts) == 0 ? 0 : errno; }

uint64_t elapsedNanoSecond() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000000000 + static_cast<uint64_t>(now.tv_nsec);
}

}  // namespace Tovra::Fundo::Platform

#include <cerrno>

#include "Fundo/Fundo3/Time.h"
#include "Fundo3/Report.h"
#include "Platform/Clock.h"

// The one monotonic clock that timers, waits and deadlines count on.

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Time";

namespace {

constexpr int kElapsed = -1;
constexpr uint64_t kNanoSecondsPerSecond = 1000000000;

int readElapsed(timespec* ts) {
    static const uint64_t mt_timestart = Platform::elapsedNanoSecond();
    const uint64_t elapsed = Platform::elapsedNanoSecond() - mt_timestart;
    ts->tv_sec = static_cast<time_t>(elapsed / kNanoSecondsPerSecond);
    ts->tv_nsec = static_cast<long>(elapsed % kNanoSecondsPerSecond);
    return 0;
}

// Since boot, in units of which a second has so many; 0 if the clock cannot be read.
template <uint64_t unitsPerSecond>
uint64_t sinceBoot(const char* name) {
    timespec now{};
    const int error = Platform::readSystemClock(&now);
    if (error != 0) {
        const Detail::Site site{kSource, name, __LINE__};
        FUNDO_REPORT_IF(
            Detail::kError,
            Detail::reportStatic(Detail::kError, site, "CTime::%s, sys_clock_gettime failed, error : %ld\n",
                                 name, static_cast<long>(error)));
        return 0;
    }
    return static_cast<uint64_t>(now.tv_sec) * unitsPerSecond +
           static_cast<uint64_t>(now.tv_nsec) / (kNanoSecondsPerSecond / unitsPerSecond);
}

}  // namespace

int clock_gettime(int clockId, timespec* ts) {
    if (clockId == kElapsed) return readElapsed(ts);
    return clockId == 0 ? Platform::readSystemClock(ts) : EINVAL;
}

uint64_t CTime::getCurrentMilliSecond() { return sinceBoot<1000>("getCurrentMilliSecond"); }

uint64_t CTime::getCurrentMicroSecond() { return sinceBoot<1000000>("getCurrentMicroSecond"); }

}  // namespace Tovra::Fundo

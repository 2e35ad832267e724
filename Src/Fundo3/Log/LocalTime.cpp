// Local time for log lines. Converting a time takes a process-wide lock of the C library, so each thread
// keeps the broken-down time of the second it last saw.

#include <ctime>

#include <sys/time.h>

#include "MiniFundo/PrintLog.h"

namespace {

struct BrokenDownSecond {
    time_t second;
    long zone;
    bool valid;
    Tovra::Fundo::SystemTimeEx fields;
};

thread_local BrokenDownSecond s_current;

void breakDown(BrokenDownSecond& current, time_t second) {
    tm local;
    localtime_r(&second, &local);
    // The conversion may have settled the zone.
    current.second = second;
    current.zone = timezone;
    current.valid = true;
    current.fields = {local.tm_year + 1900,
                      local.tm_mon + 1,
                      local.tm_mday,
                      local.tm_wday,
                      local.tm_hour,
                      local.tm_min,
                      local.tm_sec,
                      0,
                      0,
                      {0, 0, 0}};
}

}  // namespace

Tovra::Fundo::SystemTimeEx* Fundo_getCurrentTimeEx(Tovra::Fundo::SystemTimeEx* out) {
    timeval now;
    gettimeofday(&now, nullptr);
    BrokenDownSecond& current = s_current;
    if (current.second != now.tv_sec || current.zone != timezone || !current.valid) {
        breakDown(current, now.tv_sec);
    }
    *out = current.fields;
    out->millisecond = static_cast<int32_t>(now.tv_usec / 1000);
    return out;
}

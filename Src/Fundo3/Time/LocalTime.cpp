#include <sys/time.h>

#include <ctime>

#include "Fundo/Fundo3/Time.h"

namespace Tovra::Fundo {

CTime::CTime() : SystemTime{0, 0, 0, 0, 0, 0, 0, -1} {}

CTime CTime::getCurrentTime() {
    timeval now;
    ::gettimeofday(&now, nullptr);
    tm local;
    ::localtime_r(&now.tv_sec, &local);
    CTime time;
    static_cast<SystemTime&>(time) = {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_wday,
                                      local.tm_hour,        local.tm_min,     local.tm_sec,  local.tm_isdst};
    return time;
}

}  // namespace Tovra::Fundo

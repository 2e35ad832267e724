// The wall clock, read: as local time, as UTC, and cached for log lines.
#include <sys/time.h>

#include <atomic>
#include <ctime>

#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Utc.h"
#include "Fundo3/Time/DeclaredZone.h"
#include "Fundo3/Time/PrintTime.h"

namespace Tovra::Fundo {

namespace {

constexpr uint64_t kHour = 3600;
constexpr uint64_t kPrintTimeAge = 400000;  // microseconds

timeval wallClock() {
    timeval now;
    ::gettimeofday(&now, nullptr);
    return now;
}

SystemTime breakDown(time_t second) {
    tm local;
    ::localtime_r(&second, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_wday,
            local.tm_hour,        local.tm_min,     local.tm_sec,  local.tm_isdst};
}

int32_t chooseDst(int32_t ofSystem) {
    const int32_t declared = Detail::declaredDst();
    return declared >= 0 ? declared : ofSystem;
}

// Contract: the hour of a declared daylight saving is taken off although the clock already is UTC.
uint64_t utcSeconds(const timeval& now) {
    return static_cast<uint64_t>(now.tv_sec) - (Detail::declaredDst() > 0 ? kHour : 0);
}

CTime fromFields(const SystemTime& fields) {
    CTime time;
    static_cast<SystemTime&>(time) = fields;
    return time;
}

// A date and time in one word, so that no reader sees half of one. 0 is none: a day is never 0.
uint64_t pack(const SystemTime& time) {
    const int32_t bytes[] = {time.month, time.day, time.wday, time.hour, time.minute, time.second};
    auto word = static_cast<uint64_t>(time.year);
    for (const int32_t byte : bytes)
        word = word << 8 | static_cast<uint8_t>(byte);
    return word;
}

SystemTime unpack(uint64_t word) {
    const auto byte = [word](int place) { return static_cast<int32_t>(word >> (8 * place) & 0xFF); };
    return {static_cast<int32_t>(word >> 48), byte(5), byte(4), byte(3), byte(2), byte(1), byte(0), -1};
}

std::atomic<uint64_t> tnow{0};
std::atomic<uint64_t> preTime{0};
std::atomic<bool> s_bTimeUpdatNow{false};

}  // namespace

void Detail::refreshPrintTime() { s_bTimeUpdatNow.store(true, std::memory_order_relaxed); }

CTime get_current_local_time() {
    CTime time = fromFields(breakDown(wallClock().tv_sec));
    time.isdst = -1;
    return time;
}

CTime CTime::getCurrentTime() {
    CTime time = fromFields(breakDown(wallClock().tv_sec));
    time.isdst = chooseDst(time.isdst);
    return time;
}

SystemTimeEx CTime::getCurrentTimeEx() {
    const timeval now = wallClock();
    const SystemTime time = breakDown(now.tv_sec);
    return {time.year,
            time.month,
            time.day,
            time.wday,
            time.hour,
            time.minute,
            time.second,
            static_cast<int32_t>(now.tv_usec / 1000),
            chooseDst(time.isdst),
            {0, 0, 0}};
}

uint64_t CTime::getCurrentUTCtime() { return utcSeconds(wallClock()); }

uint64_t CTime::getCurrentUTCMilliSecond() {
    const timeval now = wallClock();
    return utcSeconds(now) * 1000 + static_cast<uint64_t>(now.tv_usec / 1000);
}

CTime CTime::getCurTimeForPrint() {
    const uint64_t now = getCurrentMicroSecond();
    const uint64_t cached = tnow.load(std::memory_order_relaxed);
    const bool fresh = now < preTime.load(std::memory_order_relaxed) + kPrintTimeAge;
    if (cached != 0 && fresh && !s_bTimeUpdatNow.load(std::memory_order_relaxed))
        return fromFields(unpack(cached));
    const CTime time = get_current_local_time();
    tnow.store(pack(time), std::memory_order_relaxed);
    preTime.store(now, std::memory_order_relaxed);
    s_bTimeUpdatNow.store(false, std::memory_order_relaxed);
    return time;
}

bool CTime::getUTCForEmbed(UTCTimeDef& utc) {
    const int32_t zone = Detail::declaredZone();
    const int32_t dst = Detail::declaredDst();
    if (zone == Detail::kZoneNotSet || dst == -1) return false;
    utc.utc =
        time_to_seconds(getCurTimeForPrint()) - static_cast<uint64_t>(int64_t{zone}) - (dst == 1 ? kHour : 0);
    utc.timezone = zone;
    utc.dst = dst;
    return true;
}

}  // namespace Tovra::Fundo

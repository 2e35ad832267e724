// The two zones of a process: the system's, which converts local time, and the one that the application
// declares, which only getUTCForEmbed() carries on. They are kept apart on purpose.
#include <atomic>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Utc.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"
#include "Fundo3/Time/DeclaredZone.h"
#include "Platform/WallClock.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Time";

int32_t s_TimeZoneDiffSec = Detail::kZoneNotSet;
int32_t s_isdst = -1;

namespace {

// Contract: true means that the zone is off.
std::atomic<bool> enableTimezone{false};

constexpr int kWestmost = -43200;
constexpr int kEastmost = 50400;

}  // namespace

int64_t get_timezone() {
    if (enableTimezone.load(std::memory_order_relaxed)) return 0;
    static std::atomic<bool> first{true};
    if (first.load(std::memory_order_acquire)) {
        static Detail::Immortal<CMutex> s_mtxtz;
        const Detail::MutexGuard<CMutex> guard(*s_mtxtz);
        if (first.load(std::memory_order_relaxed)) Platform::readZone();
        first.store(false, std::memory_order_release);
    }
    return Platform::secondsWest();
}

void disable_timezone() { enableTimezone.store(true, std::memory_order_relaxed); }

const NtpTimeZone g_ntp_timezone_table[kNtpTimeZones] = {
    {0, 0, "GMT+00:00"},       {1, 3600, "GMT+01:00"},    {2, 7200, "GMT+02:00"},
    {3, 10800, "GMT+03:00"},   {4, 12600, "GMT+03:30"},   {5, 14400, "GMT+04:00"},
    {6, 16200, "GMT+04:30"},   {7, 18000, "GMT+05:00"},   {8, 19800, "GMT+05:30"},
    {9, 20700, "GMT+05:45"},   {10, 21600, "GMT+06:00"},  {11, 23400, "GMT+06:30"},
    {12, 25200, "GMT+07:00"},  {13, 28800, "GMT+08:00"},  {14, 32400, "GMT+09:00"},
    {15, 34200, "GMT+09:30"},  {16, 36000, "GMT+10:00"},  {17, 39600, "GMT+11:00"},
    {18, 43200, "GMT+12:00"},  {19, 46800, "GMT+13:00"},  {20, -3600, "GMT-01:00"},
    {21, -7200, "GMT-02:00"},  {22, -10800, "GMT-03:00"}, {23, -12600, "GMT-03:30"},
    {24, -14400, "GMT-04:00"}, {25, -18000, "GMT-05:00"}, {26, -21600, "GMT-06:00"},
    {27, -25200, "GMT-07:00"}, {28, -28800, "GMT-08:00"}, {29, -32400, "GMT-09:00"},
    {30, -36000, "GMT-10:00"}, {31, -39600, "GMT-11:00"}, {32, -43200, "GMT-12:00"},
    {33, -16200, "GMT-4:30"},  {34, 37800, "GMT+10:30"},  {35, 50400, "GMT+14:00"},
};

bool CTime::setTimeZone(int seconds) {
    if (seconds < kWestmost || seconds > kEastmost) return false;
    __atomic_store_n(&s_TimeZoneDiffSec, seconds, __ATOMIC_RELAXED);
    return true;
}

int64_t CTime::getTimeZone() { return get_timezone(); }

int CTime::getTimeZonefromTable(int zoneIndex) {
    if (zoneIndex >= 0 && zoneIndex < kNtpTimeZones) return g_ntp_timezone_table[zoneIndex].offset;
    FUNDO_REPORT_STATIC(Detail::kError, "CTime::getTimeZonefromTable, zoneIndex error : %d\n", zoneIndex);
    return 0;
}

bool CTime::setDst(bool dst) {
    __atomic_store_n(&s_isdst, dst ? 1 : 0, __ATOMIC_RELAXED);
    return true;
}

int CTime::getDst() { return Detail::declaredDst(); }

int CTime::disableTimezone() {
    disable_timezone();
    return 0;
}

}  // namespace Tovra::Fundo

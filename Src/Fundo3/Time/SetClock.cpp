// The wall clock, set: CTime's setters call a hook, the default hook sets the system's clock and tells the
// listeners.
#include <cstdlib>
#include <list>

#include "Fundo/Fundo3/Error.h"
#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/SystemCall.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Utc.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"
#include "Fundo3/Time/PrintTime.h"
#include "Platform/WallClock.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Time";

// Constants, so that a hook attached by another source's initialiser stays.
TFunction2<void, const CTime&, int> s_setTimeHook = &setSysCurrentTime;
TFunction2<void, const SystemTimeEx&, int> s_setTimeHookEx = &setSysCurrentTimeEx;

namespace {

constexpr int kClockNotSet = 0x1000000E;
constexpr int kHardwareClockNotSet = 0x1000000F;

using Listener = TFunction1<bool, SystemTime>;

std::list<Listener>& getModifyProcList() {
    static Detail::Immortal<std::list<Listener>> s_proclist;
    return *s_proclist;
}

CMutex& getModifyProcListMtx() {
    static Detail::Immortal<CMutex> s_proclist_mtx;
    return *s_proclist_mtx;
}

// A copy: listeners are called without the lock and may attach others.
std::list<Listener> currentListeners() {
    const Detail::MutexGuard<CMutex> guard(getModifyProcListMtx());
    return getModifyProcList();
}

CTime bounded(const CTime& time) {
    if (time < CTime::minTime) return CTime::minTime;
    return CTime::maxTime < time ? CTime::maxTime : time;
}

bool isWithin(const CTime& time, int toleranceSeconds) {
    if (toleranceSeconds == 0) return false;
    // The difference counts in 32 bits.
    const auto difference = static_cast<int32_t>(CTime::getCurrentTime() - time);
    return std::llabs(difference) <= toleranceSeconds;
}

// The lines of both hooks have the hook's name.
#define CLOCK_REPORT(level, ...) FUNDO_REPORT_IF(level, Detail::report(level, hook, __VA_ARGS__))

void tellListeners(const CTime& time, bool hardwareClockSet, const Detail::Site& hook) {
    const std::list<Listener> listeners = currentListeners();
    for (const Listener& listener : listeners)
        listener(time);
    if (!listeners.empty()) return;
    if (hardwareClockSet) {
        CLOCK_REPORT(Detail::kInfo, "CTime::setCurrentTime() success without callback function\n");
        return;
    }
    setLastError(kHardwareClockNotSet);
    CLOCK_REPORT(Detail::kError, "CTime::setCurrentTime()  rtc time set function failed\n");
}

// What both default hooks do once the time stands and is logged.
void setClock(const CTime& time, int32_t millisecond, const Detail::Site& hook) {
    if (!Platform::setTimeOfDay(time_to_utc(time), int64_t{millisecond} * 1000)) {
        setLastError(kClockNotSet);
        return;
    }
    const bool hardwareClockSet = systemCall("hwclock -w") == 0;
    if (!hardwareClockSet) CLOCK_REPORT(Detail::kWarn, "CTime::setCurrentTime(): hwclock -w failed\n");
    tellListeners(time, hardwareClockSet, hook);
}

CTime normalised(const SystemTime& time) {
    return {time.year, time.month, time.day, time.hour, time.minute, time.second};
}

// Contract: the last error is not cleared first, so an older one of these answers for a silent hook.
bool hookSucceeded() {
    const int error = getLastError();
    return error != kClockNotSet && error != kHardwareClockNotSet;
}

template <typename Hook>
Hook replace(Hook& hook, const Hook& replacement) {
    const Hook former = hook;
    hook = replacement;
    return former;
}

}  // namespace

void setSysCurrentTime(const CTime& time, int toleranceSeconds) {
    const CTime to = bounded(time);
    if (isWithin(to, toleranceSeconds)) return;
    FUNDO_REPORT(Detail::kInfo, "CTime::setCurrentTime to %04d-%02d-%02d %02d:%02d:%02d\n", to.year, to.month,
                 to.day, to.hour, to.minute, to.second);
    setClock(to, 0, FUNDO_SITE);
}

void setSysCurrentTimeEx(const SystemTimeEx& time, int toleranceSeconds) {
    const CTime to = bounded({time.year, time.month, time.day, time.hour, time.minute, time.second});
    if (isWithin(to, toleranceSeconds)) return;
    FUNDO_REPORT(Detail::kInfo, "CTime::setCurrentTimeEx to %04d-%02d-%02d %02d:%02d:%02d:%04d\n", to.year,
                 to.month, to.day, to.hour, to.minute, to.second, time.millisecond);
    setClock(to, time.millisecond, FUNDO_SITE);
}

void CTime::setCurrentTime(const CTime& time, int toleranceSeconds) {
    s_setTimeHook(normalised(time), toleranceSeconds);
    Detail::refreshPrintTime();
}

bool CTime::setCurrentTimeEx(const CTime& time, int toleranceSeconds) {
    s_setTimeHook(normalised(time), toleranceSeconds);
    return hookSucceeded();
}

bool CTime::setCurrentTime(const SystemTimeEx& time, int toleranceSeconds) {
    const SystemTimeEx copy{
        time.year, time.month,  time.day,    Date_to_weekday(time.year, time.month, time.day),
        time.hour, time.minute, time.second, time.millisecond,
        0,         {0, 0, 0}};
    s_setTimeHookEx(copy, toleranceSeconds);
    return hookSucceeded();
}

bool CTime::attachModifyProc(TFunction1<bool, SystemTime> proc) {
    const Detail::MutexGuard<CMutex> guard(getModifyProcListMtx());
    getModifyProcList().push_back(proc);
    return true;
}

TFunction2<void, const CTime&, int> CTime::attachSetCurrentTimeHook(
    TFunction2<void, const CTime&, int> hook) {
    return replace(s_setTimeHook, hook);
}

TFunction2<void, const SystemTimeEx&, int> CTime::attachSetCurrentTimeHookEx(
    TFunction2<void, const SystemTimeEx&, int> hook) {
    return replace(s_setTimeHookEx, hook);
}

}  // namespace Tovra::Fundo

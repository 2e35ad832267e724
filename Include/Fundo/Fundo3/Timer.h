#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"

namespace Tovra::Fundo {

struct TimerInternal;

/// A named software timer that calls a delegate once or periodically on a pooled thread.
///
/// Any thread may call any operation, also from inside the callback; no lock is held while the callback runs.
/// The caller keeps the bound object alive until stopAndWait() has returned. A timer destroyed inside its own
/// callback does not wait for it.
///
///   state             isStarted  isRunning  left by
///   idle              false      false      start
///   armed             true       false      due time, stop
///   armed, calling    true       true       the callback's return
///   draining          false      true       the callback's return
///
/// Resolution is the 10 ms tick: a callback comes late by up to a tick, and counts its delay from the last
/// tick. A periodic timer keeps its phase; a period that comes due while the callback still runs, or during a
/// stall, is lost. Arming is linear in the number of armed timers, the tick is constant.
class FUNDO_API CTimer {
public:
    /// @param name at most 31 characters are kept; null counts as "Nonamed". The thread table shows it during
    /// a call
    explicit CTimer(const char* name);
    /// Stops the timer and waits for its callback, which may arm it again in vain.
    virtual ~CTimer();
    CTimer(const CTimer&) = delete;
    CTimer& operator=(const CTimer&) = delete;

    /// Arms the timer; a started timer is re-armed. Statistics are off afterwards.
    /// @param fun     the callback, which must not be empty
    /// @param delay   milliseconds to the first call; 0 calls before start() returns the result
    /// @param period  milliseconds between calls; 0 fires once
    /// @param param   the callback's argument
    /// @param timeout milliseconds after which the thread table shows the call as "Timeout"; 0 never
    /// @return false only if delay is 0 and the last callback has not returned yet, or no thread was to be
    /// had for
    ///         it; a one-shot timer then tries again at the next tick
    bool start(TFunction1<void, unsigned long> fun, unsigned int delay, unsigned int period,
               unsigned long param, unsigned int timeout);
    /// Disarms the timer; a callback that runs goes on.
    /// @param callNow fires a pending one-shot timer instead
    /// @return false if the timer was not armed
    bool stop(bool callNow);
    /// Disarms the timer and waits, without limit, for a running callback, unless called from it. The wait
    /// looks every 10 ms. @return true
    bool stopAndWait();
    /// Changes the period and moves the next call by the difference. A pending one-shot timer becomes
    /// periodic, and 0 makes the next call of a periodic one its last. @return true
    bool setPeriodTime(unsigned int period);
    /// Turns the sum of callback durations, RunningTime of the timer table, on or off until the next start().
    void enableStat(bool enable);
    /// Changes the name.
    void setName(const char* name);
    /// The name. The pointer is valid while the object lives, its text until the next setName().
    const char* getName();
    bool isStarted();  ///< Whether the timer is armed.
    bool isCalled();   ///< Whether a one-shot timer has fired since its start.
    bool isRunning();  ///< Whether the callback runs.

private:
    TimerInternal* m_internal;
};

}  // namespace Tovra::Fundo

#pragma once

#include "Fundo/Function.h"
#include "Fundo/Fundo3/Export.h"
#include "Fundo/Object.h"

/// Tovra::Fundo::CTimer under its old names: a timer that calls a delegate, or a method of a CObject, once or
/// periodically on a pooled thread, with the same states, resolution and rules. Any thread may call any
/// operation. Times above UINT_MAX milliseconds count as UINT_MAX.
class FUNDO_API CTimer {
public:
    /// @param name at most 31 characters are kept; null counts as "Nonamed"
    explicit CTimer(const char* name);
    /// Stops the timer and waits for its callback.
    virtual ~CTimer();
    CTimer(const CTimer&) = delete;
    CTimer& operator=(const CTimer&) = delete;

    /// Arms the timer; a started timer is re-armed.
    /// @param fun     the callback, which must not be empty
    /// @param delay   milliseconds to the first call; 0 calls at once
    /// @param period  milliseconds between calls; 0 fires once
    /// @param param   the callback's argument
    /// @param timeout milliseconds after which the thread table shows the call as "Timeout"; 0 never
    /// @return as Tovra::Fundo::CTimer::start()
    bool Start(TFunction1<void, unsigned long> fun, unsigned long delay, unsigned long period,
               unsigned long param, unsigned long timeout);
    /// The same with a method, cast to one of CObject where it belongs to a subclass. The timer keeps a
    /// record of each method and object it was started with until it is destroyed.
    bool Start(CObject* object, void (CObject::*proc)(unsigned int), unsigned int delay, unsigned int period,
               unsigned int param, unsigned int timeout);
    /// Disarms the timer; a callback that runs goes on.
    /// @param callNow fires a pending one-shot timer instead
    /// @return false if the timer was not armed
    bool Stop(bool callNow);
    /// Disarms the timer and waits for a running callback, unless called from it. @return true
    bool StopAndWait();
    /// Changes the period and moves the next call by the difference. @return true
    bool SetPeriodTime(unsigned long period);
    /// The name. The pointer is valid while the object lives, its text until the next SetName().
    const char* GetName();
    /// Changes the name.
    void SetName(const char* name);
    bool IsStarted();  ///< Whether the timer is armed.
    bool IsCalled();   ///< Whether a one-shot timer has fired since its start.
    bool IsRunning();  ///< Whether the callback runs.

private:
    struct TimerInternal;
    TimerInternal* m_internal;
};

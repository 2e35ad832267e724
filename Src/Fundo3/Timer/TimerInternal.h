#pragma once

#include <cstdint>

#include "Fundo/Fundo3/Function.h"
#include "Fundo3/Published.h"
#include "Fundo3/SharedName.h"

namespace Tovra::Fundo {

class CTimerThread;
class TimerManagerInternal;

// The record of a timer. The manager's mutex guards it; what is published may be read without.
struct TimerInternal {
    explicit TimerInternal(const char* name) : m_name(name) {}

    // Reschedules the timer and hands its callback to a worker. The mutex is held.
    // @return false if the last callback has not returned, which loses this call, or if there was no worker
    bool run(TimerManagerInternal& manager);

    uint64_t m_runningTime = 0;  // microseconds spent in callbacks while statistics were on
    uint64_t m_nextTime = 0;     // due, in milliseconds of the monotonic clock
    uint64_t m_callTime = 0;     // the tick of the last hand-over
    uint64_t m_period = 0;       // milliseconds; 0 fires once
    uint64_t m_timeout = 0;      // milliseconds that a callback may take; 0 any
    TFunction1<void, unsigned long> m_fun;
    unsigned long m_param = 0;
    Detail::SharedName m_name;
    Detail::Published<bool> m_started{false};  // in the list
    Detail::Published<bool> m_called{false};   // a one-shot timer has fired
    TimerInternal* m_prev = nullptr;           // the manager's list
    TimerInternal* m_next = nullptr;
    bool m_linked = false;
    Detail::Published<CTimerThread*> m_thread{nullptr};  // the worker that runs the callback
    Detail::Published<bool> m_stat{false};

private:
    void reschedule(TimerManagerInternal& manager, uint64_t now);
};

}  // namespace Tovra::Fundo

#pragma once

#include "Fundo/Fundo3/Function.h"
#include "Fundo/Fundo3/Semaphore.h"
#include "Fundo/Fundo3/Thread.h"
#include "Fundo3/Published.h"

namespace Tovra::Fundo {

struct TimerInternal;
class TimerManagerInternal;

// A pooled worker. It waits in the pool, or is out with the callback of one timer.
class CTimerThread final : public CThread {
public:
    explicit CTimerThread(TimerManagerInternal& manager);

    // Hands over a timer's callback. The manager's mutex is held and the worker is out of the pool.
    void serve(TimerInternal& timer);

    // The timer is going to be freed inside its own callback: the worker must not come back to it.
    void forgetTimer() { m_timer = nullptr; }

    // Makes a worker of the pool end.
    void cancel();

    void threadProc() override;

    CTimerThread* m_nextIdle = nullptr;

private:
    void call();

    TimerManagerInternal& m_manager;
    TFunction1<void, unsigned long> m_fun;
    unsigned long m_param = 0;
    CSemaphore m_wakeSem{0};
    TimerInternal* m_timer = nullptr;  // the timer being served
    Detail::Published<bool> m_cancel{false};
};

}  // namespace Tovra::Fundo

#pragma once

#include <cstdint>

#include "Fundo/Fundo3/RecursiveMutex.h"
#include "Fundo/Fundo3/Thread.h"
#include "Fundo3/Instance.h"
#include "Fundo3/LinkedList.h"
#include "Fundo3/Published.h"
#include "Fundo3/Timer/TimerInternal.h"
#include "Fundo3/Timer/TimerThread.h"

namespace Tovra::Fundo {

// The thread that ticks every 10 ms, the armed timers in ascending order of their due times, and the pool of
// workers.
//
// The tick looks at the head of the list alone; arming walks it. Nothing is allocated for a due timer while
// the pool has a worker. At exit the thread and the idle workers end, but the object stays: a worker that
// comes back, or a static timer that is destroyed, still finds its mutex.
class TimerManagerInternal final : public CThread {
public:
    static TimerManagerInternal* instance();

    // The mutex is held for these, and given back by putTimerThread().
    uint64_t now() const { return m_curTime; }
    void addTimer(TimerInternal* timer);
    void removeTimer(TimerInternal* timer) { m_timers.remove(timer); }
    CTimerThread* getTimerThread();  // null if the system gives no thread
    void putTimerThread(CTimerThread* pThread);

    void limitIdlePooled(int limit) { m_idleLimit = limit; }
    void dumpTimers();
    void threadProc() override;
    void atExit();

    CRecursiveMutex m_mutex;  // the one lock of all timers and workers; not held during a callback

private:
    friend class Detail::Instance<TimerManagerInternal, true>;
    TimerManagerInternal();

    bool tick();
    bool fireFirst();
    CTimerThread* cutPool(int limit);

    CTimerThread* m_idleThreads = nullptr;  // a stack: the newest serves next
    uint64_t m_curTime;                     // of the last tick; every computation takes its time from here
    Detail::LinkedList<TimerInternal> m_timers;
    Detail::Published<int> m_idleLimit{-1};
    int m_idleCount = 0;
};

}  // namespace Tovra::Fundo

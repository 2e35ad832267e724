#include "Fundo/Fundo3/Timer.h"

#include "Fundo/Fundo3/TimerManager.h"
#include "Fundo3/Report.h"
#include "Fundo3/Timer/TimerInternal.h"
#include "Fundo3/Timer/TimerManagerInternal.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Timer";

namespace {

// The manager with its mutex held.
class LockedManager {
public:
    LockedManager() : m_manager(*TimerManagerInternal::instance()) { m_manager.m_mutex.enter(); }
    ~LockedManager() { m_manager.m_mutex.leave(); }
    LockedManager(const LockedManager&) = delete;
    LockedManager& operator=(const LockedManager&) = delete;

    TimerManagerInternal* operator->() { return &m_manager; }
    TimerManagerInternal& operator*() { return m_manager; }

private:
    TimerManagerInternal& m_manager;
};

// Whether a callback runs that is not the caller. The mutex is held.
bool isBusyElsewhere(const TimerInternal& timer) {
    CTimerThread* const worker = timer.m_thread;
    return worker != nullptr && worker->getThreadID() != CThread::getCurrentThreadID();
}

// @return false if the callback has armed the timer again since it was stopped
bool freeUnlessArmed(TimerInternal* timer) {
    const LockedManager manager;
    if (timer->m_started || isBusyElsewhere(*timer)) return false;
    // Still set if this is the timer's own callback.
    if (CTimerThread* worker = timer->m_thread) worker->forgetTimer();
    delete timer;
    return true;
}

}  // namespace

bool TimerInternal::run(TimerManagerInternal& manager) {
    manager.removeTimer(this);
    const uint64_t now = manager.now();
    reschedule(manager, now);
    if (m_thread != nullptr) return false;

    CTimerThread* worker = manager.getTimerThread();
    if (worker == nullptr) {
        if (m_period != 0) return false;
        // The one call of this timer is not lost with the worker: the next tick tries again.
        m_nextTime = now;
        m_started = true;
        m_called = false;
        manager.addTimer(this);
        return false;
    }
    m_callTime = now;
    m_thread = worker;
    worker->serve(*this);
    return true;
}

// Whole periods that were missed are skipped: the timer keeps its phase, and no burst follows a stall.
void TimerInternal::reschedule(TimerManagerInternal& manager, uint64_t now) {
    if (m_period == 0) {
        m_started = false;
        m_called = true;
        return;
    }
    if (now >= m_nextTime) m_nextTime += ((now - m_nextTime) / m_period + 1) * m_period;
    manager.addTimer(this);
}

CTimer::CTimer(const char* name) : m_internal(new TimerInternal(name)) { CTimerManager::instance(); }

CTimer::~CTimer() {
    do {
        stopAndWait();
    } while (!freeUnlessArmed(m_internal));
}

bool CTimer::start(TFunction1<void, unsigned long> fun, unsigned int delay, unsigned int period,
                   unsigned long param, unsigned int timeout) {
    LockedManager manager;
    TimerInternal& timer = *m_internal;
    timer.m_fun = fun;
    timer.m_nextTime = delay + manager->now();
    timer.m_period = period;
    timer.m_timeout = timeout;
    timer.m_param = param;
    timer.m_called = false;
    timer.m_stat = false;
    manager->removeTimer(&timer);
    manager->addTimer(&timer);
    timer.m_started = true;
    return delay != 0 || timer.run(*manager);
}

bool CTimer::stop(bool callNow) {
    LockedManager manager;
    TimerInternal& timer = *m_internal;
    if (!timer.m_started) return false;
    manager->removeTimer(&timer);
    timer.m_started = false;
    return timer.m_period != 0 || !callNow || timer.run(*manager);
}

bool CTimer::stopAndWait() {
    stop(false);
    TimerManagerInternal& manager = *TimerManagerInternal::instance();
    manager.m_mutex.enter();
    for (unsigned long round = 0; isBusyElsewhere(*m_internal); ++round) {
        manager.m_mutex.leave();
        CThread::sleep(10);
        if (round % 500 == 0) {
            FUNDO_REPORT_THIS(Detail::kInfo, "CTimer::Stop '%s' wait callback exit!\n",
                              m_internal->m_name.copy().text);
        }
        manager.m_mutex.enter();
    }
    manager.m_mutex.leave();
    return true;
}

bool CTimer::setPeriodTime(unsigned int period) {
    LockedManager manager;
    TimerInternal& timer = *m_internal;
    manager->removeTimer(&timer);
    timer.m_nextTime += period - timer.m_period;
    timer.m_period = period;
    if (timer.m_started) manager->addTimer(&timer);
    return true;
}

void CTimer::enableStat(bool enable) { m_internal->m_stat = enable; }

void CTimer::setName(const char* name) { m_internal->m_name.set(name); }

const char* CTimer::getName() { return m_internal->m_name.text(); }

bool CTimer::isStarted() { return m_internal->m_started; }

bool CTimer::isCalled() { return m_internal->m_called; }

bool CTimer::isRunning() { return m_internal->m_thread != nullptr; }

}  // namespace Tovra::Fundo

#include "Fundo/Fundo3/TimerManager.h"

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo3/Report.h"
#include "Fundo3/Timer/TimerManagerInternal.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Timer";

namespace {

constexpr int kTick = 10;         // milliseconds
constexpr int kDeadline = 10000;  // milliseconds without a tick that the thread table shows as "Timeout"

bool TimerManagerLogPrintProc(const char*) { return true; }

// Wakes all before it waits for the first, so that many end as fast as one.
void endWorkers(CTimerThread* chain) {
    for (CTimerThread* worker = chain; worker != nullptr; worker = worker->m_nextIdle)
        worker->cancel();
    while (chain != nullptr) {
        CTimerThread* worker = chain;
        chain = worker->m_nextIdle;
        while (!worker->isThreadOver())
            CThread::sleep(1);
        delete worker;
    }
}

}  // namespace

FUNDO_DEFINE_LASTING_INSTANCE(TimerManagerInternal)

TimerManagerInternal::TimerManagerInternal()
    : CThread("TimerManager", 1, 0, 0), m_curTime(CTime::getCurrentMilliSecond()) {
    createThread();
}

void TimerManagerInternal::atExit() {
    destroyThread();
    m_mutex.enter();
    CTimerThread* idle = m_idleThreads;
    m_idleThreads = nullptr;
    m_idleCount = 0;
    m_mutex.leave();
    endWorkers(idle);
}

void TimerManagerInternal::threadProc() {
    bool needSleep = true;
    while (looping()) {
        if (needSleep) CThread::sleep(kTick);
        m_mutex.enter();
        if (!needSleep || tick()) needSleep = fireFirst();
        m_mutex.leave();
    }
}

// @return whether time has moved
bool TimerManagerInternal::tick() {
    const uint64_t before = m_curTime;
    m_curTime = CTime::getCurrentMilliSecond();
    setTimeout(kDeadline, m_curTime);
    if (m_curTime < before) {
        Detail::assertionFailed("0", "virtual void Tovra::Fundo::TimerManagerInternal::threadProc()", kSource,
                                __LINE__);
    }
    return m_curTime != before;
}

// One timer for each pass, so that others get the mutex in between.
// @return whether nothing more is due
bool TimerManagerInternal::fireFirst() {
    TimerInternal* first = m_timers.head();
    if (first != nullptr && first->m_nextTime < m_curTime) first->run(*this);
    first = m_timers.head();
    return first == nullptr || first->m_nextTime >= m_curTime;
}

// Contract: among equal due times the timer added last stands first.
void TimerManagerInternal::addTimer(TimerInternal* timer) {
    TimerInternal* before = nullptr;
    TimerInternal* after = m_timers.head();
    while (after != nullptr && after->m_nextTime < timer->m_nextTime) {
        before = after;
        after = after->m_next;
    }
    m_timers.insertBehind(timer, before);
}

CTimerThread* TimerManagerInternal::getTimerThread() {
    if (m_idleThreads != nullptr) {
        CTimerThread* worker = m_idleThreads;
        m_idleThreads = worker->m_nextIdle;
        --m_idleCount;
        return worker;
    }
    auto* worker = new CTimerThread(*this);
    if (worker->createThread()) return worker;
    delete worker;
    return nullptr;
}

void TimerManagerInternal::putTimerThread(CTimerThread* pThread) {
    FUNDO_ASSERT_IN(pThread,
                    "void Tovra::Fundo::TimerManagerInternal::putTimerThread(Tovra::Fundo::CTimerThread *)");
    pThread->m_nextIdle = m_idleThreads;
    m_idleThreads = pThread;
    ++m_idleCount;
    const int limit = m_idleLimit;
    CTimerThread* surplus = limit > 0 && m_idleCount > limit ? cutPool(limit) : nullptr;
    m_mutex.leave();
    endWorkers(surplus);
}

// Keeps the newest idle workers. @return the others
CTimerThread* TimerManagerInternal::cutPool(int limit) {
    CTimerThread* last = m_idleThreads;
    for (int kept = 1; kept < limit; ++kept)
        last = last->m_nextIdle;
    CTimerThread* surplus = last->m_nextIdle;
    last->m_nextIdle = nullptr;
    m_idleCount = limit;
    return surplus;
}

void TimerManagerInternal::dumpTimers() {
    m_mutex.enter();
    FUNDO_REPORT(Detail::kInfo, "Timers: ( %llu Milli-Seconds Elapsed )\n",
                 static_cast<unsigned long long>(m_curTime));
    FUNDO_REPORT(Detail::kInfo,
                 "            Name            NextTime RunningTime Period   Used/Timeout State\n");
    FUNDO_REPORT(Detail::kInfo,
                 "____________________________________________________________________________\n");
    for (const TimerInternal* timer = m_timers.head(); timer != nullptr; timer = timer->m_next) {
        const bool running = timer->m_thread != nullptr;
        FUNDO_REPORT(Detail::kInfo, "%24s %11llu %11llu %6lu %6d/%6lu %s\n", timer->m_name.copy().text,
                     static_cast<unsigned long long>(timer->m_nextTime),
                     static_cast<unsigned long long>(timer->m_runningTime / 1000),
                     static_cast<unsigned long>(timer->m_period),
                     running ? static_cast<int>(m_curTime - timer->m_callTime) : 0,
                     static_cast<unsigned long>(timer->m_timeout), running ? "Running" : "Idle");
    }
    FUNDO_REPORT(Detail::kInfo, "\n");
    m_mutex.leave();
}

FUNDO_DEFINE_LASTING_INSTANCE(CTimerManager)

// The print log's state is made before the timers', so that callbacks and dumps can log to the end.
CTimerManager::CTimerManager() {
    FUNDO_REPORT_THIS(Detail::kTrace, "CTimerManager::CTimerManager()>>>>>>>>>\n");
    const TFunction1<bool, const char*> touch(TimerManagerLogPrintProc);
    attachPrint(touch);
    detachPrint(touch);
    m_internal = TimerManagerInternal::instance();
}

void CTimerManager::dumpTimers() { m_internal->dumpTimers(); }

void CTimerManager::limitIdlePooled(int limit) { m_internal->limitIdlePooled(limit); }

}  // namespace Tovra::Fundo

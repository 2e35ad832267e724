#include "Fundo3/Timer/TimerThread.h"

#include <algorithm>
#include <climits>

#include "Fundo/Fundo3/Time.h"
#include "Fundo3/Timer/TimerInternal.h"
#include "Fundo3/Timer/TimerManagerInternal.h"

namespace Tovra::Fundo {

static constexpr char kIdleName[] = "[Pooled]";

CTimerThread::CTimerThread(TimerManagerInternal& manager)
    : CThread(kIdleName, 64, 0, 0), m_manager(manager) {}

void CTimerThread::serve(TimerInternal& timer) {
    setThreadName(timer.m_name.copy().text);
    // A longer time must not turn negative on its way to the deadline.
    setTimeout(static_cast<int>(std::min<uint64_t>(timer.m_timeout, INT_MAX)));
    m_fun = timer.m_fun;
    m_param = timer.m_param;
    m_timer = &timer;
    m_wakeSem.post();
}

void CTimerThread::cancel() {
    m_cancel = true;
    m_wakeSem.post();
}

void CTimerThread::threadProc() {
    while (looping()) {
        m_wakeSem.pend();
        if (m_cancel) return;
        call();
    }
}

void CTimerThread::call() {
    const bool timed = m_timer->m_stat;
    const uint64_t start = timed ? CTime::getCurrentMicroSecond() : 0;
    m_fun(m_param);
    setTimeout(0, 0);
    setThreadName(kIdleName);

    m_manager.m_mutex.enter();
    if (m_timer != nullptr) {
        if (timed && m_timer->m_stat) m_timer->m_runningTime += CTime::getCurrentMicroSecond() - start;
        // From here on the owner may free the timer.
        m_timer->m_thread = nullptr;
        m_timer = nullptr;
    }
    m_manager.putTimerThread(this);
}

}  // namespace Tovra::Fundo

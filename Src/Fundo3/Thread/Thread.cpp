// Stopping is cooperative. The last thing a body does with its object is to clear m_running, so that is what
// the destructor waits for, whatever was asked before.

#include "Fundo/Fundo3/Thread.h"

#include "Fundo/Fundo3/Time.h"
#include "Fundo3/Report.h"
#include "Fundo3/Thread/ThreadInternal.h"
#include "Fundo3/Thread/ThreadManagerInternal.h"
#include "Fundo3/Thread/ThreadStart.h"
#include "Platform/ThreadId.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Thread";

ThreadInternal::ThreadInternal(CThread* owner, const char* name, int priority, int policy, int stackSize)
    : m_policy(policy),
      m_priority(priority),
      m_stackSize(stackSize),
      m_name(name),
      m_manager(ThreadManagerInternal::instance()),
      m_owner(owner) {}

CThread::CThread(const char* name, int priority, int policy, int stackSize)
    : m_internal(new ThreadInternal(this, name, priority, policy, stackSize)) {}

CThread::~CThread() {
    m_internal->m_mutex.enter();
    const bool loop = m_internal->m_loop;
    m_internal->m_mutex.leave();
    if (loop) destroyThread();

    for (unsigned long long times = 1; m_internal->m_running != 0; ++times) {
        sleep(1);
        if (times % 100 != 0) continue;
        FUNDO_REPORT_THIS(Detail::kDebug, "CThread::~CThread %s wait for thread over, times : %llu\n",
                          m_internal->m_name.copy().text, times);
    }
    delete m_internal;
}

bool CThread::createThread() {
    ThreadInternal& record = *m_internal;
    record.m_mutex.enter();
    // A former body may still be on its way out.
    while (!record.m_loop && record.m_running != 0) {
        record.m_mutex.leave();
        sleep(1);
        record.m_mutex.enter();
    }
    if (record.m_loop) {
        record.m_mutex.leave();
        FUNDO_REPORT_THIS(Detail::kWarn, "CThread::CreateThread() thread '%s' is still running!\n",
                          record.m_name.copy().text);
        return false;
    }
    record.m_loop = true;
    record.m_destroyed = false;
    record.m_tid = -1;
    record.m_waitExit = true;
    record.m_expiry = 0;
    while (record.m_exitSem.tryPend() == 0) {
    }

    bool locked = true;
    Detail::StartError error;
    const bool started = Detail::startThread(record, locked, error);
    if (!started) record.m_loop = false;
    if (locked) record.m_mutex.leave();
    if (!started) FUNDO_REPORT_THIS(Detail::kError, "%s", error.text);
    return started;
}

bool CThread::destroyThread() {
    ThreadInternal& record = *m_internal;
    record.m_mutex.enter();
    const bool destroyed = record.m_destroyed;
    const bool over = isThreadOver();
    if (!destroyed && !over) {
        record.m_loop = false;
        record.m_destroyed = true;
    }
    record.m_mutex.leave();

    if (destroyed || over) {
        FUNDO_REPORT_THIS(Detail::kWarn, "CThread::DestroyThread() thread '%s' has %s!\n",
                          record.m_name.copy().text, destroyed ? "been destroyed" : "exited");
        return false;
    }
    if (record.m_tid == getCurrentThreadID()) {
        record.m_waitExit = false;
        return true;
    }
    // A concurrent createThread() ends the wait: it has seen the body off itself.
    while (record.m_destroyed && record.m_running != 0) {
        if (record.m_exitSem.pend(50) == 0) break;
    }
    return true;
}

bool CThread::cancelThread() {
    m_internal->m_mutex.enter();
    const bool looped = m_internal->m_loop;
    m_internal->m_loop = false;
    m_internal->m_mutex.leave();
    if (looped) {
        m_internal->m_waitExit = false;
    } else {
        FUNDO_REPORT_THIS(Detail::kWarn, "CThread::cancelThread() thread '%s' not exist!\n",
                          m_internal->m_name.copy().text);
    }
    return looped;
}

bool CThread::terminateThread() {
    destroyThread();
    // To join a detached thread, or one that never was, is undefined.
    if (!m_internal->m_joinable) return false;
    m_internal->m_joinable = false;
    return ::pthread_join(m_internal->m_id, nullptr) == 0;
}

bool CThread::isThreadOver() { return m_internal->m_running == 0 && !m_internal->m_loop; }

bool CThread::looping() const { return m_internal->m_loop; }

int CThread::getThreadID() { return m_internal->m_tid; }

const char* CThread::getThreadName() { return m_internal->m_name.text(); }

void CThread::setThreadName(const char* name) { m_internal->m_name.set(name); }

void CThread::enableStackSize() { m_internal->m_stackEnabled = true; }

int CThread::shareSocket(int socket) { return socket; }

void CThread::setTimeout(int ms) { setTimeout(ms, ms != 0 ? CTime::getCurrentMilliSecond() : 0); }

void CThread::setTimeout(int ms, unsigned long long now) { m_internal->setTimeout(ms, now); }

bool CThread::isTimeout() {
    m_internal->m_mutex.enter();
    const bool late = m_internal->isLate(CTime::getCurrentMilliSecond());
    m_internal->m_mutex.leave();
    return late;
}

bool CThread::setCurrentTimeout(int ms) {
    ThreadInternal* self = ThreadManagerInternal::instance()->getThread(getCurrentThreadID());
    if (self == nullptr) return false;
    self->m_mutex.enter();
    self->setTimeout(ms, CTime::getCurrentMilliSecond());
    self->m_mutex.leave();
    return true;
}

int CThread::getCurrentThreadID() { return Platform::currentThreadId(); }

}  // namespace Tovra::Fundo

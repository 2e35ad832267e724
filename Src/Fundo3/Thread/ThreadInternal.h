#pragma once

#include <pthread.h>

#include <cstdint>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/Semaphore.h"
#include "Fundo/Fundo3/Thread.h"
#include "Fundo3/Published.h"
#include "Fundo3/SharedName.h"

namespace Tovra::Fundo {

class ThreadManagerInternal;

// The record of a CThread. The mutex keeps start and stop apart; looping(), deadlines, the name and the
// body's end do without, and a stale answer there is harmless.
struct ThreadInternal {
    ThreadInternal(CThread* owner, const char* name, int priority, int policy, int stackSize);

    // Whether the deadline has passed.
    bool isLate(uint64_t now) const {
        const uint64_t expiry = m_expiry;
        return expiry != 0 && expiry < now;
    }

    // 0 clears the deadline.
    void setTimeout(int ms, uint64_t now) {
        // A negative time is a deadline in the past.
        const auto offset = static_cast<uint64_t>(static_cast<int64_t>(ms));
        m_expiry = ms != 0 ? now + offset : 0;
    }

    pthread_t m_id{};
    Detail::Published<int> m_running{
        0};  // the body exists, and touches nothing here once it has cleared this
    const int m_policy;
    const int m_priority;
    const int m_stackSize;
    Detail::Published<int> m_tid{-1};
    Detail::SharedName m_name;
    ThreadInternal* m_prev = nullptr;  // the manager's list
    ThreadInternal* m_next = nullptr;
    bool m_linked = false;
    CSemaphore m_exitSem{0};                  // posted by the body at its end
    Detail::Published<uint64_t> m_expiry{0};  // deadline in milliseconds of the monotonic clock; 0 none
    Detail::Published<bool> m_loop{false};
    Detail::Published<bool> m_destroyed{false};  // destroyThread() has been accepted since the last start
    Detail::Published<bool> m_waitExit{false};   // the body must post m_exitSem
    Detail::Published<bool> m_stackEnabled{false};
    Detail::Published<bool> m_joinable{false};  // the system refused to detach it
    ThreadManagerInternal* const m_manager;
    CThread* const m_owner;
    CMutex m_mutex;
};

}  // namespace Tovra::Fundo

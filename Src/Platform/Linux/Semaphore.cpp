// First-in first-out semaphore by direct hand-over.
//
//   1. balance is the counts free, or, below 0, the number of waiters whose post has not come yet. One
//      atomic operation on it decides every call, and is all there is to a call that meets no waiter.
//   2. A waiter stands in line with a node on its own stack and sleeps on the futex in it. The post that
//      finds balance below 0 is committed to one waiter: it takes the first node out of line and hands over.
//   3. A post may overtake the waiter that it is committed to on the way to the lock. It then leaves a count
//      in owed, which the next to join takes at once. So owed is above 0 only while nobody stands in line.
//   4. An interrupted waiter may leave only while balance is below 0. At 0 or above every waiter has a post
//      committed to it, so the waiter stays and gets it: no count is lost and none is made.
//
// A count thus never lies about where a later caller could snatch it from the waiter it was meant for.

#include "Platform/Semaphore.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace Tovra::Fundo::Platform {

struct SemaphoreWaiter {
    std::atomic<uint32_t> handed{0};
    bool inLine = false;
    SemaphoreWaiter* next = nullptr;
};

namespace {

class Guard {
public:
    explicit Guard(semaphore_t& semaphore) : m_lock(semaphore.lock) { pthread_mutex_lock(&m_lock); }
    ~Guard() { pthread_mutex_unlock(&m_lock); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    pthread_mutex_t& m_lock;
};

// Without a timeout the kernel restarts the wait by itself after a handler with SA_RESTART.
bool waitInterrupted(std::atomic<uint32_t>& word) {
    return syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0) != 0 && errno == EINTR;
}

// @return false if a post was owed, which is taken then
bool joinLine(semaphore_t& semaphore, SemaphoreWaiter& waiter) {
    const Guard guard(semaphore);
    if (semaphore.owed > 0) {
        --semaphore.owed;
        return false;
    }
    waiter.inLine = true;
    (semaphore.first == nullptr ? semaphore.first : semaphore.last->next) = &waiter;
    semaphore.last = &waiter;
    return true;
}

void unlink(semaphore_t& semaphore, SemaphoreWaiter& waiter) {
    SemaphoreWaiter* previous = nullptr;
    for (SemaphoreWaiter* at = semaphore.first; at != &waiter; at = at->next)
        previous = at;
    (previous == nullptr ? semaphore.first : previous->next) = waiter.next;
    if (semaphore.last == &waiter) semaphore.last = previous;
    waiter.inLine = false;
}

// @return false if a post is on its way to this waiter
bool leaveLine(semaphore_t& semaphore, SemaphoreWaiter& waiter) {
    const Guard guard(semaphore);
    if (!waiter.inLine) return false;
    int64_t balance = semaphore.balance.load(std::memory_order_relaxed);
    do {
        if (balance >= 0) return false;
    } while (!semaphore.balance.compare_exchange_weak(balance, balance + 1, std::memory_order_acq_rel,
                                                      std::memory_order_relaxed));
    unlink(semaphore, waiter);
    return true;
}

int waitInLine(semaphore_t& semaphore) {
    SemaphoreWaiter waiter;
    if (!joinLine(semaphore, waiter)) return KERN_SUCCESS;
    while (waiter.handed.load(std::memory_order_acquire) == 0) {
        if (waitInterrupted(waiter.handed) && leaveLine(semaphore, waiter)) return EINTR;
    }
    return KERN_SUCCESS;
}

// The waiter who gets the post, or null if it is owed to one who has not joined yet.
SemaphoreWaiter* takeFirst(semaphore_t& semaphore) {
    const Guard guard(semaphore);
    SemaphoreWaiter* first = semaphore.first;
    if (first == nullptr) {
        ++semaphore.owed;
    } else {
        unlink(semaphore, *first);
    }
    return first;
}

void handOver(semaphore_t& semaphore) {
    SemaphoreWaiter* waiter = takeFirst(semaphore);
    if (waiter == nullptr) return;
    std::atomic<uint32_t>* word = &waiter->handed;
    word->store(1, std::memory_order_release);
    // The node may be gone already. The kernel takes its address as a mere key, and whoever sleeps on that
    // address by now bears a needless wake-up.
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

}  // namespace

int semaphore_create(semaphore_t* semaphore, int initialCount) {
    if (initialCount < 0) return EINVAL;
    semaphore->balance.store(initialCount, std::memory_order_relaxed);
    return KERN_SUCCESS;
}

int semaphore_destroy(semaphore_t* semaphore) {
    if (semaphore->balance.load(std::memory_order_relaxed) < 0) return EBUSY;
    return pthread_mutex_destroy(&semaphore->lock);
}

int semaphore_wait(semaphore_t* semaphore) {
    if (semaphore->balance.fetch_sub(1, std::memory_order_acq_rel) > 0) return KERN_SUCCESS;
    return waitInLine(*semaphore);
}

int semaphore_signal(semaphore_t* semaphore) {
    if (semaphore->balance.fetch_add(1, std::memory_order_acq_rel) < 0) handOver(*semaphore);
    return KERN_SUCCESS;
}

int semaphore_timedwait(semaphore_t* semaphore) {
    int64_t balance = semaphore->balance.load(std::memory_order_relaxed);
    do {
        if (balance <= 0) return ETIMEDOUT;
    } while (!semaphore->balance.compare_exchange_weak(balance, balance - 1, std::memory_order_acq_rel,
                                                       std::memory_order_relaxed));
    return KERN_SUCCESS;
}

}  // namespace Tovra::Fundo::Platform

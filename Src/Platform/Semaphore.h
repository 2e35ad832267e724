#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>

// Counting semaphores that release their waiters strictly first-in first-out. All answers are KERN_SUCCESS
// or an error number of errno.h.

namespace Tovra::Fundo::Platform {

constexpr int KERN_SUCCESS = 0;

struct SemaphoreWaiter;

// Storage of a semaphore; the fields belong to the implementation.
struct semaphore_t {
    std::atomic<int64_t> balance{0};
    pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    SemaphoreWaiter* first = nullptr;
    SemaphoreWaiter* last = nullptr;
    int64_t owed = 0;
};

// @param initialCount 0 or above, else EINVAL
int semaphore_create(semaphore_t* semaphore, int initialCount);

// Ends a semaphore, whose storage stays the caller's. EBUSY if a thread waits on it; it lives on then.
int semaphore_destroy(semaphore_t* semaphore);

// Takes a count, waiting as long as it takes. EINTR if a signal handler installed without SA_RESTART ran
// meanwhile: no count is taken then.
int semaphore_wait(semaphore_t* semaphore);

// Hands a count to the longest waiter, or adds it. The semaphore is not touched any more once a waiter can
// have returned, so who was released may end it.
int semaphore_signal(semaphore_t* semaphore);

// The timed wait with a timeout of zero: takes a count, or ETIMEDOUT at once.
int semaphore_timedwait(semaphore_t* semaphore);

}  // namespace Tovra::Fundo::Platform

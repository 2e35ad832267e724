#include "Fundo/Fundo3/Semaphore.h"

#include <unistd.h>

#include <new>

#include "Fundo3/Report.h"
#include "Platform/Semaphore.h"

namespace Tovra::Fundo {

using Platform::KERN_SUCCESS;

static constexpr char kSource[] = "Src/Fundo3/Semaphore";

struct CSemaphore::SemaphoreInternal {
    Platform::semaphore_t* m_sem;
};

CSemaphore::CSemaphore(int initialCount) : m_internal(new SemaphoreInternal) {
    static constexpr char kFunction[] = "Tovra::Fundo::CSemaphore::CSemaphore(int)";
    m_internal->m_sem = new (std::nothrow) Platform::semaphore_t;
    FUNDO_ASSERT_IN(m_internal->m_sem, kFunction);
    const int ret = semaphore_create(m_internal->m_sem, initialCount);
    FUNDO_ASSERT_IN(KERN_SUCCESS == ret, kFunction);
}

CSemaphore::~CSemaphore() {
    static constexpr char kFunction[] = "Tovra::Fundo::CSemaphore::~CSemaphore()";
    FUNDO_ASSERT_IN(m_internal->m_sem, kFunction);
    const int ret = semaphore_destroy(m_internal->m_sem);
    FUNDO_ASSERT_IN(KERN_SUCCESS == ret, kFunction);
    delete m_internal->m_sem;
    delete m_internal;
}

int CSemaphore::pend() {
    static constexpr char kFunction[] = "int Tovra::Fundo::CSemaphore::pend()";
    FUNDO_ASSERT_IN(m_internal->m_sem, kFunction);
    const int ret = semaphore_wait(m_internal->m_sem);
    // Contract: an interrupted wait is not retried but fatal.
    FUNDO_ASSERT_IN(KERN_SUCCESS == ret, kFunction);
    return 0;
}

// Contract: polls instead of waiting, and sleeps before the first look; callers rely on the 10 ms steps.
int CSemaphore::pend(uint32_t timeoutMs) {
    FUNDO_ASSERT_IN(m_internal->m_sem, "int Tovra::Fundo::CSemaphore::pend(uint32_t)");
    int rounds = static_cast<int>(timeoutMs / 10);
    bool taken = false;
    do {
        usleep(10000);
        taken = semaphore_timedwait(m_internal->m_sem) == KERN_SUCCESS;
        if (!taken) --rounds;
    } while (rounds > 0 && !taken);
    return taken ? 0 : -1;
}

int CSemaphore::tryPend() {
    const int ret = semaphore_timedwait(m_internal->m_sem);
    FUNDO_REPORT(Detail::kInfo, "semaphore_timedwait ret=%d\n", ret);
    return ret == KERN_SUCCESS ? 0 : -1;
}

int CSemaphore::post() {
    FUNDO_ASSERT_IN(m_internal->m_sem, "int Tovra::Fundo::CSemaphore::post()");
    return semaphore_signal(m_internal->m_sem);
}

}  // namespace Tovra::Fundo

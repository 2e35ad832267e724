// The old semaphore: the platform's own, checked at each use by the C library's assertion.
#include "Fundo/Semaphore.h"

#include "Fundo/Fundo3/Detail/PlatformAssert.h"
#include "Platform/Semaphore.h"

using Tovra::Fundo::Platform::KERN_SUCCESS;
using Tovra::Fundo::Platform::semaphore_t;

static constexpr char kSource[] = "Src/Semaphore";

struct CSemaphore::SemaphoreInternal {
    semaphore_t* m_sem;
};

CSemaphore::CSemaphore(unsigned int count) : m_internal(new SemaphoreInternal{new semaphore_t}) {
    const int ret = semaphore_create(m_internal->m_sem, static_cast<int>(count));
    FUNDO_PLATFORM_ASSERT(KERN_SUCCESS == ret, kSource);
}

CSemaphore::~CSemaphore() {
    FUNDO_PLATFORM_ASSERT(m_internal->m_sem, kSource);
    const int ret = semaphore_destroy(m_internal->m_sem);
    FUNDO_PLATFORM_ASSERT(KERN_SUCCESS == ret, kSource);
    delete m_internal->m_sem;
    delete m_internal;
}

int CSemaphore::Pend() {
    FUNDO_PLATFORM_ASSERT(m_internal->m_sem, kSource);
    const int ret = semaphore_wait(m_internal->m_sem);
    // Contract: an interrupted wait is not retried but fatal.
    FUNDO_PLATFORM_ASSERT(KERN_SUCCESS == ret, kSource);
    return 0;
}

int CSemaphore::Post() {
    FUNDO_PLATFORM_ASSERT(m_internal->m_sem, kSource);
    return semaphore_signal(m_internal->m_sem);
}

// The old mutex: the platform's own, checked at each use by the C library's assertion.
#include "Fundo/Mutex.h"

#include <pthread.h>

#include "Fundo/Fundo3/Detail/PlatformAssert.h"

static constexpr char kSource[] = "Src/Mutex";

struct CMutex::MutexInternal {
    pthread_mutex_t* m_lock;
};

CMutex::CMutex(Type type) : m_internal(new MutexInternal{new pthread_mutex_t}) {
    pthread_mutexattr_t attributes;
    int ret = pthread_mutexattr_init(&attributes);
    FUNDO_PLATFORM_ASSERT(ret == 0, kSource);
    ret = pthread_mutexattr_settype(&attributes,
                                    type == recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_DEFAULT);
    FUNDO_PLATFORM_ASSERT(ret == 0, kSource);
    ret = pthread_mutex_init(m_internal->m_lock, &attributes);
    FUNDO_PLATFORM_ASSERT(ret == 0, kSource);
    pthread_mutexattr_destroy(&attributes);
}

CMutex::~CMutex() {
    FUNDO_PLATFORM_ASSERT(m_internal->m_lock, kSource);
    const int ret = pthread_mutex_destroy(m_internal->m_lock);
    FUNDO_PLATFORM_ASSERT(ret == 0, kSource);
    delete m_internal->m_lock;
    delete m_internal;
}

bool CMutex::Enter() {
    FUNDO_PLATFORM_ASSERT(m_internal->m_lock, kSource);
    return pthread_mutex_lock(m_internal->m_lock) == 0;
}

bool CMutex::TryEnter() {
    FUNDO_PLATFORM_ASSERT(m_internal->m_lock, kSource);
    return pthread_mutex_trylock(m_internal->m_lock) == 0;
}

bool CMutex::Leave() {
    FUNDO_PLATFORM_ASSERT(m_internal->m_lock, kSource);
    return pthread_mutex_unlock(m_internal->m_lock) == 0;
}

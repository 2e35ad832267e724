#include "Fundo/Fundo3/RecursiveMutex.h"

#include <pthread.h>

#include "Fundo3/Report.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/RecursiveMutex";

namespace {

constexpr char kConstructor[] = "Tovra::Fundo::CRecursiveMutex::CRecursiveMutex()";

pthread_mutex_t* platform(void* mutex) { return static_cast<pthread_mutex_t*>(mutex); }

}  // namespace

CRecursiveMutex::CRecursiveMutex() : m_mutex(new pthread_mutex_t) {
    pthread_mutexattr_t attributes;
    int ret = pthread_mutexattr_init(&attributes);
    FUNDO_ASSERT_IN(ret == 0, kConstructor);
    ret = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    FUNDO_ASSERT_IN(ret == 0, kConstructor);
    ret = pthread_mutex_init(platform(m_mutex), &attributes);
    FUNDO_ASSERT_IN(ret == 0, kConstructor);
    pthread_mutexattr_destroy(&attributes);
}

CRecursiveMutex::~CRecursiveMutex() {
    const int ret = pthread_mutex_destroy(platform(m_mutex));
    FUNDO_ASSERT_IN(ret == 0, "Tovra::Fundo::CRecursiveMutex::~CRecursiveMutex()");
    delete platform(m_mutex);
}

bool CRecursiveMutex::enter() { return pthread_mutex_lock(platform(m_mutex)) == 0; }

bool CRecursiveMutex::leave() { return pthread_mutex_unlock(platform(m_mutex)) == 0; }

}  // namespace Tovra::Fundo

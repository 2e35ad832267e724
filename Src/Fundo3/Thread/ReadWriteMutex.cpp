#include "Fundo/Fundo3/ReadWriteMutex.h"

#include <pthread.h>

#include <cstring>
#include <new>

#include "Fundo3/Report.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/ReadWriteMutex";

class RWMutexInternal {
public:
    explicit RWMutexInternal(CReadWriteMutex::RWPriority priority);

    int m_priority;
    pthread_rwlock_t* m_lock;
};

RWMutexInternal::RWMutexInternal(CReadWriteMutex::RWPriority priority) : m_priority(priority) {
    static constexpr char kFunction[] =
        "Tovra::Fundo::RWMutexInternal::RWMutexInternal(CReadWriteMutex::RWPriority)";
    if (m_priority >= 2) {
        FUNDO_REPORT_THIS(Detail::kWarn, "Input rwpriority level error, priorityDefault used!\n");
        m_priority = CReadWriteMutex::priorityDefault;
    }
    m_lock = new (std::nothrow) pthread_rwlock_t;
    FUNDO_ASSERT_IN(m_lock, kFunction);
    int ret = -1;
    if (m_priority == CReadWriteMutex::priorityWrite) {
        // Contract: fatal, not softened into the default. The two blanks belong to the text.
        FUNDO_REPORT_THIS(
            Detail::kError,
            "current OS(android/mac)  doesn't support to configure write priority of RWmutex\n");
    } else {
        ret = pthread_rwlock_init(m_lock, nullptr);
    }
    FUNDO_ASSERT_IN(ret == 0, kFunction);
}

CReadWriteMutex::CReadWriteMutex() : CReadWriteMutex(priorityDefault) {}

CReadWriteMutex::CReadWriteMutex(RWPriority priority) : m_internal(new RWMutexInternal(priority)) {}

CReadWriteMutex::~CReadWriteMutex() {
    const int ret = pthread_rwlock_destroy(m_internal->m_lock);
    FUNDO_ASSERT_IN(ret == 0, "Tovra::Fundo::CReadWriteMutex::~CReadWriteMutex()");
    delete m_internal->m_lock;
    delete m_internal;
}

bool CReadWriteMutex::enterReading() { return pthread_rwlock_rdlock(m_internal->m_lock) == 0; }

bool CReadWriteMutex::enterWriting() {
    const int ret = pthread_rwlock_wrlock(m_internal->m_lock);
    if (ret == 0) return true;
    FUNDO_REPORT_THIS(Detail::kWarn, "pthread_rwlock_wrlock called failed for :%s\n", std::strerror(ret));
    return false;
}

bool CReadWriteMutex::leave() {
    const int ret = pthread_rwlock_unlock(m_internal->m_lock);
    if (ret == 0) return true;
    FUNDO_REPORT_THIS(Detail::kWarn, "pthread_rwlock_unlock called failed for :%s\n", std::strerror(ret));
    return false;
}

}  // namespace Tovra::Fundo

#include "Fundo/Fundo3/ThreadSpecific.h"

#include <pthread.h>

namespace Tovra::Fundo {

struct CThreadSpecific::ThreadSpecificInternal {
    pthread_key_t key;
    bool valid;
};

CThreadSpecific::CThreadSpecific() : m_internal(new ThreadSpecificInternal{}) {
    // No destructor function: values are numbers, or pointers owned elsewhere.
    m_internal->valid = pthread_key_create(&m_internal->key, nullptr) == 0;
}

CThreadSpecific::~CThreadSpecific() {
    if (m_internal->valid) pthread_key_delete(m_internal->key);
    delete m_internal;
}

bool CThreadSpecific::valid() { return m_internal->valid; }

bool CThreadSpecific::setValue(const void* value) {
    return m_internal->valid && pthread_setspecific(m_internal->key, value) == 0;
}

bool CThreadSpecific::getValue(void** value) {
    if (!m_internal->valid) return false;
    *value = pthread_getspecific(m_internal->key);
    return true;
}

}  // namespace Tovra::Fundo

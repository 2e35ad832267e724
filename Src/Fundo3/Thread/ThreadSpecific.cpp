#include "Fundo/Fundo3/ThreadSpecific.h"

#include <pthread.h>

// A slot is read for every reuse delegate and last error, so validity costs no load of its own: the key is
// kept one higher, and 0 means that there is none.

namespace Tovra::Fundo {

namespace {

uintptr_t makeKey() {
    pthread_key_t key;
    // No destructor function: values are numbers, or pointers owned elsewhere.
    return pthread_key_create(&key, nullptr) == 0 ? uintptr_t{key} + 1 : 0;
}

pthread_key_t platform(uintptr_t key) { return static_cast<pthread_key_t>(key - 1); }

}  // namespace

CThreadSpecific::CThreadSpecific() : m_key(makeKey()) {}

CThreadSpecific::~CThreadSpecific() {
    if (valid()) pthread_key_delete(platform(m_key));
}

bool CThreadSpecific::valid() { return m_key != 0; }

bool CThreadSpecific::setValue(const void* value) {
    return m_key != 0 && pthread_setspecific(platform(m_key), value) == 0;
}

bool CThreadSpecific::getValue(void** value) {
    if (m_key == 0) return false;
    *value = pthread_getspecific(platform(m_key));
    return true;
}

}  // namespace Tovra::Fundo

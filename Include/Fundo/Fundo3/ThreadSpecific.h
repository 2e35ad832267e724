#pragma once

#include <pthread.h>

#include <cstdint>

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo {

/// One pointer-sized value for each thread. Values are not cleaned up when a thread ends: they are numbers,
/// or pointers owned elsewhere. Any thread may call any operation.
class FUNDO_API CThreadSpecific {
public:
    /// Takes one of the platform's keys; valid() tells whether there was one left.
    CThreadSpecific();
    ~CThreadSpecific();
    CThreadSpecific(const CThreadSpecific&) = delete;
    CThreadSpecific& operator=(const CThreadSpecific&) = delete;

    /// Whether the key exists.
    bool valid() { return m_key != 0; }

    /// Stores the calling thread's value. @return false if there is no key or the platform refused
    bool setValue(const void* value) { return valid() && pthread_setspecific(platformKey(), value) == 0; }

    /// Reads the calling thread's value, null if it never set one.
    /// @return false if there is no key; the output is untouched then
    bool getValue(void** value) {
        if (!valid()) return false;
        *value = pthread_getspecific(platformKey());
        return true;
    }

private:
    // Inline, as its users pay for a call less: a slot is read for every last error and reuse delegate.
    pthread_key_t platformKey() const { return static_cast<pthread_key_t>(m_key - 1); }

    uintptr_t m_key;  // the platform's key + 1, in one word with whether there is one
};

}  // namespace Tovra::Fundo

#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo {

namespace Detail {

/// The platform's own calls, reached without a step in between.
extern FUNDO_API void* (*const readThreadSlot)(unsigned int key);
extern FUNDO_API int (*const writeThreadSlot)(unsigned int key, const void* value);

}  // namespace Detail

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
    bool valid() { return m_slot != 0; }

    /// Stores the calling thread's value. @return false if there is no key or the platform refused
    bool setValue(const void* value) {
        return m_slot != 0 && Detail::writeThreadSlot(m_slot - 1, value) == 0;
    }

    /// Reads the calling thread's value, null if it never set one.
    /// @return false if there is no key; the output is untouched then
    bool getValue(void** value) {
        if (m_slot == 0) return false;
        *value = Detail::readThreadSlot(m_slot - 1);
        return true;
    }

private:
    unsigned int m_slot;  // the platform's key + 1; 0 without one
};

}  // namespace Tovra::Fundo

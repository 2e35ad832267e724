#pragma once

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
    bool valid();

    /// Stores the calling thread's value. @return false if there is no key or the platform refused
    bool setValue(const void* value);

    /// Reads the calling thread's value, null if it never set one.
    /// @return false if there is no key; the output is untouched then
    bool getValue(void** value);

private:
    uintptr_t m_key;  // the platform's key + 1, in one word with whether there is one
};

}  // namespace Tovra::Fundo

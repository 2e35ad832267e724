#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo {

/// A mutex that its holder may enter again; as many leave() calls free it. Any thread.
/// Failures while it is built or torn down, such as the end of a held mutex, end the process by assertion.
class FUNDO_API CRecursiveMutex {
public:
    CRecursiveMutex();
    ~CRecursiveMutex();
    CRecursiveMutex(const CRecursiveMutex&) = delete;
    CRecursiveMutex& operator=(const CRecursiveMutex&) = delete;

    /// Locks, waiting as long as it takes. @return false if the platform refused
    bool enter();

    /// Gives back one enter(). @return false if the platform refused
    bool leave();

private:
    void* m_mutex;  // the platform's mutex, on the heap
};

}  // namespace Tovra::Fundo

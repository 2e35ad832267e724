#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo {

/// A mutex that is not recursive. Any thread may call any operation.
///
/// An operating-system failure while the mutex is built or torn down ends the process by assertion:
/// destroying a held mutex logs "errno:EBUSY" and aborts, in every build.
class FUNDO_API CMutex {
public:
    CMutex();
    ~CMutex();
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    /// Locks, waiting as long as it takes. @return false if the platform refused
    bool enter();

    /// Locks if nobody holds the mutex. @return false at once otherwise
    bool tryEnter();

    /// Unlocks. @return false if the platform refused
    bool leave();

private:
    void* m_mutex;  // the platform's mutex, on the heap
};

}  // namespace Tovra::Fundo

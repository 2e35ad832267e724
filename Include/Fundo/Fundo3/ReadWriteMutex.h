#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo {

class RWMutexInternal;

/// A lock for many readers or one writer. Any thread may call any operation.
/// Failures while it is built or torn down end the process by assertion.
class FUNDO_API CReadWriteMutex {
public:
    /// Who goes first when readers and a writer wait.
    enum RWPriority : int {
        priorityDefault = 0,  ///< as the platform grants it
        priorityWrite = 1     ///< not to be had here: asking for it is logged and ends the process
    };

    /// A lock of priorityDefault.
    CReadWriteMutex();

    /// @param priority 2 or above logs a warning and counts as priorityDefault
    explicit CReadWriteMutex(RWPriority priority);
    ~CReadWriteMutex();
    CReadWriteMutex(const CReadWriteMutex&) = delete;
    CReadWriteMutex& operator=(const CReadWriteMutex&) = delete;

    /// Locks for reading. @return false if the platform refused; not logged
    bool enterReading();

    /// Locks for writing. @return false if the platform refused, such as a holder asking again; logged
    bool enterWriting();

    /// Gives the lock back. @return false if the platform refused; logged
    bool leave();

private:
    RWMutexInternal* m_internal;
};

}  // namespace Tovra::Fundo

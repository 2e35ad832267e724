#pragma once

#include "Fundo/Fundo3/Export.h"

/// A counting semaphore that wakes its waiters first-in first-out. Any thread may call any operation.
/// Failures while it is built or torn down, and an interrupted Pend(), end the process by the C library's
/// assertion.
class FUNDO_API CSemaphore {
public:
    /// @param count the count at the start, at most INT_MAX
    explicit CSemaphore(unsigned int count);
    ~CSemaphore();
    CSemaphore(const CSemaphore&) = delete;
    CSemaphore& operator=(const CSemaphore&) = delete;

    /// Takes a count, waiting as long as it takes. A signal that interrupts the wait is fatal. @return 0
    int Pend();
    /// Adds a count or hands it to the longest waiter. @return 0 for success
    int Post();

private:
    struct SemaphoreInternal;
    SemaphoreInternal* m_internal;
};

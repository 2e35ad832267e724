#pragma once

#include <cstdint>

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo {

/// A counting semaphore that wakes its waiters first-in first-out. Any thread may call any operation.
/// Failures while it is built or torn down, and an interrupted pend(), end the process by assertion.
class FUNDO_API CSemaphore {
public:
    /// @param initialCount the count at the start, 0 or above
    explicit CSemaphore(int initialCount);
    ~CSemaphore();
    CSemaphore(const CSemaphore&) = delete;
    CSemaphore& operator=(const CSemaphore&) = delete;

    /// Takes a count, waiting as long as it takes. A signal whose handler was installed without
    /// SA_RESTART and interrupts the wait is fatal, never counted as a post. @return 0
    int pend();

    /// Takes a count within a limit, by polling every 10 ms. It sleeps before it looks, so even a count
    /// that is there costs 10 ms, and the limit is cut to a multiple of 10 ms, at least one.
    /// @return 0, or -1 if there was no count in time
    int pend(uint32_t timeoutMs);

    /// Takes a count if one is there; logs the platform's answer at level 4. @return 0, or -1 at once
    int tryPend();

    /// Adds a count or hands it to the longest waiter. @return 0 for success
    int post();

private:
    struct SemaphoreInternal;
    SemaphoreInternal* m_internal;
};

}  // namespace Tovra::Fundo

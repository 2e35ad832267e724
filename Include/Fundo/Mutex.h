#pragma once

#include "Fundo/Fundo3/Export.h"

/// A mutex, recursive on demand. Any thread may call any operation. A mutex that cannot be built or torn
/// down, a held one among these, ends the process by the C library's assertion.
class FUNDO_API CMutex {
public:
    /// Whether a thread may enter again what it holds.
    enum Type : int {
        normal = 0,    ///< no: it would wait for itself
        recursive = 1  ///< yes; it leaves as often as it entered
    };

    /// Makes the mutex; a type other than recursive counts as normal.
    explicit CMutex(Type type);
    ~CMutex();
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    /// Locks, waiting as long as it takes. @return false if the platform refused
    bool Enter();
    /// Locks if no other thread holds the mutex. @return false at once otherwise
    bool TryEnter();
    /// Unlocks. @return false if the platform refused
    bool Leave();

private:
    struct MutexInternal;
    MutexInternal* m_internal;
};

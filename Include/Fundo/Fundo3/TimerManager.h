#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo {

class TimerManagerInternal;

namespace Detail {
template <class T, bool lasting>
class Instance;
}

/// The timers of the process and the pool of threads that call them. Any thread may call any operation.
///
/// An exit handler ends the ticking and the idle threads of the pool. Callbacks that run then are not waited
/// for, and timers that are armed then never fire.
class FUNDO_API CTimerManager {
public:
    /// The one manager; its first use, or the first CTimer, starts the thread "TimerManager".
    static CTimerManager* instance();

    /// Logs the table of armed timers at level 4, in the order of their due times. The lock of the timers is
    /// held meanwhile: print procedures must not wait for another thread's timer call.
    void dumpTimers();
    /// Bounds the idle threads of the pool. It takes effect as threads come back: the longest idle ones end.
    /// @param limit 0 or less means no limit
    void limitIdlePooled(int limit);

private:
    friend class Detail::Instance<CTimerManager, true>;
    CTimerManager();

    TimerManagerInternal* m_internal;
};

}  // namespace Tovra::Fundo

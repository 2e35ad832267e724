#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo::Detail {
template <class T, bool lasting>
class Instance;
}

/// The armed timers as old code sees them: those of both timer classes. Any thread may call any operation.
class FUNDO_API ITimerManager {
public:
    /// Logs the table of armed timers at level 4.
    virtual void DumpTimers() = 0;
    virtual ~ITimerManager();

    /// The one manager.
    static ITimerManager* instance();
};

/// The one ITimerManager.
class FUNDO_API CTimerManager : public ITimerManager {
public:
    /// The one manager, made on first use and never destroyed.
    static CTimerManager* instance();

    void DumpTimers() override;  ///< Logs the table.

private:
    friend class Tovra::Fundo::Detail::Instance<CTimerManager, true>;
    CTimerManager() = default;
};

#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"
#include "Fundo/Fundo3/Thread.h"

namespace Tovra::Fundo {

/// A thread whose body is a delegate. The delegate is the whole thread: it gets this object, loops on
/// looping() and returns when that ends. An empty delegate crashes at the start.
class FUNDO_API CThreadLite : public CThread {
public:
    /// @param proc the body; the other parameters are CThread's
    CThreadLite(TFunction1<void, CThreadLite&> proc, const char* name, int priority, int policy,
                int stackSize);
    /// Stops a running thread; the delegate has returned when this returns.
    ~CThreadLite() override;

    void threadProc() override;  ///< Calls the delegate.

private:
    struct ThreadLiteInternal;
    ThreadLiteInternal* m_internal;
};

}  // namespace Tovra::Fundo

#include "Fundo/Fundo3/ThreadLite.h"

namespace Tovra::Fundo {

struct CThreadLite::ThreadLiteInternal {
    TFunction1<void, CThreadLite&> m_proc;
};

CThreadLite::CThreadLite(TFunction1<void, CThreadLite&> proc, const char* name, int priority, int policy,
                         int stackSize)
    : CThread(name, priority, policy, stackSize), m_internal(new ThreadLiteInternal{proc}) {}

CThreadLite::~CThreadLite() {
    if (!isThreadOver()) destroyThread();
    // A body that was stopped before may still be in the delegate.
    while (!isThreadOver())
        sleep(1);
    delete m_internal;
}

void CThreadLite::threadProc() { m_internal->m_proc(*this); }

}  // namespace Tovra::Fundo

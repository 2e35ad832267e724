#pragma once

#include <string>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Instance.h"
#include "Fundo3/LinkedList.h"
#include "Fundo3/Published.h"
#include "Fundo3/Thread/ThreadInternal.h"

namespace Tovra::Fundo {

// The table of running bodies, the newest first. Never destroyed: it stops no thread, and a body that ends
// while the process exits still takes itself out.
class ThreadManagerInternal {
public:
    static ThreadManagerInternal* instance();

    void addThread(ThreadInternal* thread);
    void removeThread(ThreadInternal* thread);

    // The newest record of an id, or null. Nothing protects it once the lock is gone, unless it is the
    // caller's own.
    ThreadInternal* getThread(int id);

    // Copies the name under the lock, safe against the thread's end. @return false if there is no such id
    bool copyThreadName(int id, Detail::SharedName::Copy& name);
    bool getTimeOutThreads(std::string& names);
    void registerMainThread();
    void dumpThreads();

private:
    friend class Detail::Instance<ThreadManagerInternal, true>;
    ThreadManagerInternal();

    ThreadInternal* find(int id) const;

    Detail::LinkedList<ThreadInternal> m_threads;
    CMutex m_mutex;  // comes before a thread's mutex
    Detail::Published<int> m_mainThreadId{-1};
};

}  // namespace Tovra::Fundo

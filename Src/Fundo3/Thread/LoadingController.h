#pragma once

#include <pthread.h>

#include <map>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/RecursiveMutex.h"
#include "Fundo/Fundo3/Thread.h"
#include "Fundo3/Instance.h"
#include "Fundo3/Thread/DutyCycle.h"

namespace Tovra::Fundo {

// The thread that holds others back, running while there are any. It stops at exit, but the object stays: a
// thread that ends later still marks its entry.
class CThreadLoadingController final : public CThread {
public:
    static CThreadLoadingController* instance();
    // Null before the first thread was held back.
    static CThreadLoadingController* existing();

    // Registers the calling thread, whose handle this is, or begins its cycle anew.
    void addThread(pthread_t thread, int runShare, int sleepShare);
    void removeThread(pthread_t thread);
    void threadProc() override;
    void atExit();

private:
    friend class Detail::Instance<CThreadLoadingController, true>;

    struct Entry {
        ThreadLoadingControl m_control;
        bool m_alive;  // a handle must not be used once its thread has ended, though the entry stays
    };

    CThreadLoadingController();
    static void threadEnds(void* controller);
    void tick();
    void stop();

    CMutex m_mutex;  // guards the map; a thread that ends passes through it, so who holds it may signal
    std::map<pthread_t, Entry> m_threads;
    // Keeps a start and a stop apart. Before m_mutex; recursive because a start that fails logs, and a print
    // procedure may call load().
    CRecursiveMutex m_startMutex;
    pthread_key_t m_endKey{};
};

}  // namespace Tovra::Fundo

#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Thread.h"

class CThreadDrived;

/// The base of old thread classes: a subclass overrides ThreadProc(), which is expected to loop on looping().
///
/// Everything else forwards to the operation of that name of Tovra::Fundo::CThread, with its rules and log
/// lines. The destructor stops the thread and waits for it, but the subclass's part is gone by then: a
/// subclass whose ThreadProc() uses its own members, or may not have begun yet, calls DestroyThread()
/// in its own destructor.
class FUNDO_API CThread {
public:
    /// Makes the record; there is no thread yet. Parameters as in Tovra::Fundo::CThread.
    CThread(const char* name, int priority, int policy, int stackSize);
    /// Stops a running thread and waits for it.
    virtual ~CThread();
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;

    /// The body of the thread.
    virtual void ThreadProc() = 0;

    /// Changes the name in the thread table; null gives "Nonamed".
    void SetThreadName(const char* name);
    /// Starts the thread. @return false, logged, if it runs already or the system refused
    bool CreateThread();
    /// Asks the thread to stop and waits for it. @return false, logged, if it is over
    bool DestroyThread();
    /// Asks the thread to stop and does not wait. @return false, logged, if it was not looping
    bool CancelThread();
    /// DestroyThread(), then joins what can be joined; the answer is normally false.
    bool TerminateThread();
    /// Whether no body runs and none is wanted.
    bool IsThreadOver();
    /// The id of the running thread; -1 before the body starts.
    int GetThreadID();
    /// Does nothing. @return its argument
    int ShareSocket(int socket);
    /// Sets the supervision deadline to now + ms milliseconds; 0 clears it. Above INT_MAX counts as INT_MAX.
    void SetTimeout(unsigned long ms);
    /// The same with a time of CTime::getCurrentMilliSecond() that the caller already has.
    void setTimeout(int ms, unsigned long long now);
    /// Whether the deadline has passed.
    bool IsTimeout();
    /// Whether the thread is wanted; what ThreadProc() loops on.
    bool looping() const;

    /// The kernel's id of the calling thread.
    static int GetCurrentThreadID();
    /// Sets the deadline of the calling thread as SetTimeout(). @return false if it is not a running thread
    /// of either thread class
    static bool SetCurrentTimeout(unsigned long ms);

private:
    CThreadDrived* m_internal;
};

/// The current thread that runs the body of an old one.
class FUNDO_API CThreadDrived : public Tovra::Fundo::CThread {
public:
    /// @param owner whose ThreadProc() is the body; null ends the process ("m_owner != NULL")
    CThreadDrived(::CThread* owner, const char* name, int priority, int policy, int stackSize);
    /// Calls the owner's ThreadProc().
    void threadProc() override;

private:
    ::CThread* m_owner;
};

/// Does nothing. @return 0
FUNDO_API int ThreadBody(void* argument);

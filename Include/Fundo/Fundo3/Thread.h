#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo {

struct ThreadInternal;

/// The base of every thread that the library or its users run: a subclass overrides threadProc(). The thread
/// is detached, stands in the thread manager's table while it runs, and is stopped only by asking.
///
///   state        looping()  isThreadOver()  reached by
///   not started  false      true            the constructor
///   running      true       false           createThread()
///   stopping     false      false           destroyThread(), cancelThread()
///   over         false      true            the return of threadProc(); createThread() starts anew
///
/// Any thread may call any operation. threadProc() is expected to loop on looping(). The destructor stops the
/// thread and waits for it without limit, but it runs after the subclass's part is gone: a subclass whose
/// threadProc() uses its own members calls destroyThread() in its own destructor.
class FUNDO_API CThread {
public:
    /// Makes the record; there is no thread yet.
    /// @param name      at most 31 characters are kept; null counts as "Nonamed". The kernel shows the first
    /// 15
    /// @param priority  1 highest to 127 lowest, not checked. Nice value priority * 40 / 128 - 19 at policy
    /// 0, where
    ///                  permitted; the system's real-time priorities from highest to lowest at policy 1
    /// @param policy    0 normal, 1 real-time (first-in first-out); any other is logged and counts as 0
    /// @param stackSize bytes, applied only after enableStackSize(); 0 leaves it to the platform, 1 to 16383
    /// are raised
    ///                  to 16384
    CThread(const char* name, int priority, int policy, int stackSize);
    /// Stops a running thread, waits for it, frees the record.
    virtual ~CThread();
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;

    /// The body of the thread.
    virtual void threadProc() = 0;

    /// Starts the thread. A former body that is still on its way out is waited for.
    /// @return false, logged, if it runs already, the stack size is negative or the system refused
    bool createThread();
    /// Asks the thread to stop and waits for it, without limit, in steps of 10 ms; a thread that stops itself
    /// does not wait.
    /// @return false, logged, if it is over or was destroyed since its start
    bool destroyThread();
    /// Asks the thread to stop and does not wait. @return false, logged, if it was not looping
    bool cancelThread();
    /// destroyThread(), then joins what can be joined. Threads are detached, so the answer is normally false.
    bool terminateThread();
    /// Whether no body runs and none is wanted.
    bool isThreadOver();
    /// Whether the thread is wanted; what threadProc() loops on.
    bool looping() const;
    /// The id of the running thread; -1 before the body starts.
    int getThreadID();
    /// The name. The pointer is valid while the object lives, its text until the next setThreadName().
    const char* getThreadName();
    /// Changes the name in the thread table; null gives "Nonamed". The kernel's name stays.
    void setThreadName(const char* name);
    /// Lets the stack size reach the system at the next start.
    void enableStackSize();
    /// Does nothing. @return its argument
    int shareSocket(int socket);
    /// Sets the supervision deadline to now + ms milliseconds; 0 clears it. A missed deadline shows as
    /// "Timeout" in the table and in CThreadManager::getTimeOutThreads(); nothing else happens.
    void setTimeout(int ms);
    /// The same with a time of CTime::getCurrentMilliSecond() that the caller already has.
    void setTimeout(int ms, unsigned long long now);
    /// Whether the deadline has passed.
    bool isTimeout();

    /// Sets the deadline of the calling thread. @return false if it is not a running CThread
    static bool setCurrentTimeout(int ms);
    /// Sleeps at least ms milliseconds, which signals do not shorten; 0 or less only yields. Usable in a
    /// signal handler.
    static void sleep(int ms);
    /// The kernel's id of the calling thread.
    static int getCurrentThreadID();

    /// Limits the calling thread to a share of a core's time, without cooperation: a controller thread of the
    /// highest real-time priority ticks every millisecond and, in slots spread evenly over each hundred,
    /// sends SIGUSR2, whose handler sleeps for a millisecond. System calls go on behind it, but those that
    /// the system never restarts (poll, epoll_wait, nanosleep and their kin) end early with EINTR. A thread
    /// that blocks SIGUSR2 is not held back.
    ///
    /// The library takes SIGUSR2 for itself with the first share below 100 and keeps it until the process
    /// ends; a handler of somebody else's is answered by an assertion. Without the right to real-time
    /// scheduling the controller cannot start: the log says "pthread create failed" and nothing is held back.
    ///
    /// Meant for a handful of threads: a tick costs a signal for each. Call load(100) before the thread ends,
    /// else the controller ticks on for it.
    /// @param percent 1 to 99 sets the share, or sets it anew; 100 frees the thread; anything else changes
    /// nothing and is logged as "thread load percent %d is invalid!"
    static void load(int percent);

private:
    ThreadInternal* m_internal;
};

}  // namespace Tovra::Fundo

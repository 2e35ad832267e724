#pragma once

namespace Tovra::Fundo::Platform {

// An event queue on which nothing is ever registered: the only ways out of a wait are its timeout and a
// signal. Any number of threads may wait on one queue, signal handlers included.
class WaitQueue {
public:
    WaitQueue();
    WaitQueue(const WaitQueue&) = delete;
    WaitQueue& operator=(const WaitQueue&) = delete;

    // The system's handle of the queue, negative if it could not be made.
    int descriptor() const { return m_descriptor; }

    // Waits for at least that long. @return 0 at the timeout; -1 with errno, EINTR whenever a signal
    // handler ran, however it was installed
    int wait(int milliseconds) const;

private:
    const int m_descriptor;
};

}  // namespace Tovra::Fundo::Platform

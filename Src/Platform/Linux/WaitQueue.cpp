#include "Platform/WaitQueue.h"

#include <sys/epoll.h>

namespace Tovra::Fundo::Platform {

// The descriptor is never closed: the queue serves threads that still run while the process exits.
WaitQueue::WaitQueue() : m_descriptor(epoll_create1(EPOLL_CLOEXEC)) {}

int WaitQueue::wait(int milliseconds) const {
    epoll_event event;
    return epoll_wait(m_descriptor, &event, 1, milliseconds);
}

}  // namespace Tovra::Fundo::Platform

#include "Platform/ThreadId.h"

#include <pthread.h>
#include <unistd.h>

namespace Tovra::Fundo::Platform {

namespace {

thread_local int t_id = 0;

// The one thread of a forked child starts with a copy of its parent's number.
[[maybe_unused]] const int s_forkHandler = pthread_atfork(nullptr, nullptr, [] { t_id = 0; });

}  // namespace

int currentThreadId() {
    if (t_id == 0) t_id = static_cast<int>(gettid());
    return t_id;
}

}  // namespace Tovra::Fundo::Platform

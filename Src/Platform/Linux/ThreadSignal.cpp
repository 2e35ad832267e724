#include "Platform/ThreadSignal.h"

#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "Platform/Clock.h"

namespace Tovra::Fundo::Platform {

namespace {

// The C library's function is a cancellation point, and the interrupted code may be anywhere.
bool takeSignal(const sigset_t& signals, uint64_t nanoSecond) {
    timespec timeout{};
    timeout.tv_sec = static_cast<time_t>(nanoSecond / 1000000000);
    timeout.tv_nsec = static_cast<long>(nanoSecond % 1000000000);
    return ::syscall(SYS_rt_sigtimedwait, &signals, nullptr, &timeout, _NSIG / 8) > 0;
}

}  // namespace

const int kThreadSignal = SIGUSR2;

void sleepInHandler(uint64_t nanoSecond) {
    sigset_t own;
    sigemptyset(&own);
    sigaddset(&own, kThreadSignal);
    uint64_t now = elapsedNanoSecond();
    for (uint64_t end = now + nanoSecond; now < end;) {
        const bool taken = takeSignal(own, end - now);
        now = elapsedNanoSecond();
        if (taken) end = now + nanoSecond;
    }
}

}  // namespace Tovra::Fundo::Platform

// A sleep that signals do not shorten. Signal handlers sleep through it too, so it takes no lock.

#include "Fundo/Fundo3/Thread.h"

#include <sched.h>

#include <cerrno>
#include <cstring>

#include "Fundo/Fundo3/Time.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Report.h"
#include "Platform/WaitQueue.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Thread";

namespace {

const Platform::WaitQueue& waitQueue() {
    static Detail::Immortal<Platform::WaitQueue> kqueunconfig;
    return *kqueunconfig;
}

// Opened at load: a signal handler must not be the first to ask for it.
[[maybe_unused]] const Platform::WaitQueue& s_atLoad = waitQueue();

}  // namespace

void CThread::sleep(int ms) {
    if (ms <= 0) {
        ::sched_yield();
        return;
    }
    const Platform::WaitQueue& queue = waitQueue();
    if (queue.descriptor() < 0) {
        FUNDO_REPORT_STATIC(Detail::kError, "CThread::create kqueue failed,kqueuefd = %d!\n",
                            queue.descriptor());
        return;
    }
    const uint64_t start = CTime::getCurrentMilliSecond();
    int remaining = ms;
    for (int result = queue.wait(remaining); result != 0; result = queue.wait(remaining)) {
        if (result > 0) continue;
        const int error = errno;
        const auto elapsed = static_cast<long long>(CTime::getCurrentMilliSecond() - start);
        if (error != EINTR) {
            FUNDO_REPORT_STATIC(
                Detail::kWarn,
                "CThread::sleep select time = %lld, SleepTime = %d while breaking, errorCode : %s\n", elapsed,
                ms, std::strerror(error));
        }
        if (elapsed > ms) return;
        remaining = static_cast<int>(ms - elapsed);
    }
}

}  // namespace Tovra::Fundo

// A duty cycle made of signals. Each tick either leaves a thread alone or sends it a signal that sleeps one
// tick in its handler, wherever the thread is. With load(30) three slots of ten run:
//
//   tick    |  1  |  2  |  3  |  4  |  5  |  6  |  7  |  8  |  9  | 10  |
//   signal  |  x           x     x           x     x           x     x
//   thread     sleeps run  sleeps......run   sleeps......run   sleeps......
//
// The sleep lasts as long as the tick, so the next signal often finds the thread asleep. That one starts no
// second handler but moves the end of the sleep: a hundred in a row need the stack of one.

#include "Fundo3/Thread/LoadingController.h"

#include <signal.h>

#include <cerrno>
#include <cstdint>

#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"
#include "Platform/ThreadSignal.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Thread";

namespace {

constexpr int kRealTime = 1;
constexpr int kTick = 1;  // milliseconds
constexpr uint64_t kSlot = kTick * UINT64_C(1000000);

void onSignal(int) {
    const int error = errno;
    Platform::sleepInHandler(kSlot);
    errno = error;
}

}  // namespace

FUNDO_DEFINE_LASTING_INSTANCE(CThreadLoadingController)

CThreadLoadingController* CThreadLoadingController::existing() {
    return Detail::Instance<CThreadLoadingController, true>::existing();
}

CThreadLoadingController::CThreadLoadingController() : CThread("ThreadLoadingControl", 1, kRealTime, 0) {
    static constexpr char kFunction[] = "Tovra::Fundo::CThreadLoadingController::CThreadLoadingController()";
    struct sigaction act {};
    struct sigaction oldact {};
    act.sa_handler = onSignal;
    act.sa_flags = SA_RESTART | SA_NODEFER;
    // Contract: the flags stand, but the mask takes back what SA_NODEFER gives: handlers that nest would pile
    // up in a burst, from their first instruction on. Nothing is lost, as sleepInHandler() takes the signal.
    sigaddset(&act.sa_mask, Platform::kThreadSignal);
    int ret = ::sigaction(Platform::kThreadSignal, &act, &oldact);
    FUNDO_ASSERT_IN(ret == 0, kFunction);
    FUNDO_ASSERT_IN(oldact.sa_handler == 0 && oldact.sa_sigaction == 0, kFunction);
    ret = ::pthread_key_create(&m_endKey, threadEnds);
    FUNDO_ASSERT_IN(ret == 0, kFunction);
}

void CThreadLoadingController::addThread(pthread_t thread, int runShare, int sleepShare) {
    const bool endIsSeen = ::pthread_setspecific(m_endKey, this) == 0;
    const Detail::MutexGuard<CRecursiveMutex> guard(m_startMutex);
    m_mutex.enter();
    m_threads[thread] = {{runShare, sleepShare}, endIsSeen};
    m_mutex.leave();
    // A thread that is on its way out is waited for and started anew.
    if (!looping()) createThread();
}

void CThreadLoadingController::removeThread(pthread_t thread) {
    const Detail::MutexGuard<CRecursiveMutex> guard(m_startMutex);
    m_mutex.enter();
    m_threads.erase(thread);
    const bool empty = m_threads.empty();
    m_mutex.leave();
    if (empty) stop();
}

void CThreadLoadingController::atExit() {
    const Detail::MutexGuard<CRecursiveMutex> guard(m_startMutex);
    stop();
}

void CThreadLoadingController::stop() {
    if (looping()) destroyThread();
}

void CThreadLoadingController::threadEnds(void* controller) {
    auto& self = *static_cast<CThreadLoadingController*>(controller);
    const Detail::MutexGuard<CMutex> guard(self.m_mutex);
    const auto found = self.m_threads.find(::pthread_self());
    if (found != self.m_threads.end()) found->second.m_alive = false;
}

void CThreadLoadingController::threadProc() {
    while (looping()) {
        tick();
        sleep(kTick);
    }
}

void CThreadLoadingController::tick() {
    const Detail::MutexGuard<CMutex> guard(m_mutex);
    for (auto& [thread, entry] : m_threads) {
        if (!takeSlot(entry.m_control) && entry.m_alive) ::pthread_kill(thread, Platform::kThreadSignal);
    }
}

void CThread::load(int percent) {
    if (percent < 1 || percent > 100) {
        FUNDO_REPORT(Detail::kError, "thread load percent %d is invalid!\n", percent);
        return;
    }
    if (percent < 100) {
        CThreadLoadingController::instance()->addThread(::pthread_self(), percent, 100 - percent);
        return;
    }
    CThreadLoadingController* controller = CThreadLoadingController::existing();
    if (controller != nullptr) controller->removeThread(::pthread_self());
}

}  // namespace Tovra::Fundo

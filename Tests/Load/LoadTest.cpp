#include <dlfcn.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/Semaphore.h"
#include "Fundo/Fundo3/ThreadLite.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Thread/LoadingController.h"
#include "Support/Await.h"
#include "Support/LogCapture.h"

using namespace Tovra::Fundo;
using Support::await;
using Clock = std::chrono::steady_clock;

namespace {

std::atomic<bool> s_asNormalThread{true};  // so that the controller runs on any machine

// How often each thread was signalled. It stays, as the controller may run to the end of the process.
Detail::Immortal<CMutex> s_mutex;
Detail::Immortal<std::map<pthread_t, int>> s_sent;

int sent(pthread_t thread, int more = 0) {
    const Detail::MutexGuard<CMutex> guard(*s_mutex);
    return (*s_sent)[thread] += more;
}

void awaitSignals(int count) {
    const int wanted = sent(pthread_self()) + count;
    await([&] { return sent(pthread_self()) >= wanted; });
}

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" int pthread_kill(pthread_t thread, int signal) noexcept {
    sent(thread, 1);
    return next<int(pthread_t, int)>("pthread_kill")(thread, signal);
}

extern "C" int pthread_attr_setinheritsched(pthread_attr_t* attributes, int inherit) noexcept {
    return next<int(pthread_attr_t*, int)>("pthread_attr_setinheritsched")(
        attributes, s_asNormalThread ? PTHREAD_INHERIT_SCHED : inherit);
}

namespace {

CThreadLoadingController& controller() { return *CThreadLoadingController::instance(); }

// Runs all at once, under bursts of signals with pauses in which they get on.
void runTogether(const std::vector<std::function<void()>>& works, int burst) {
    std::atomic<size_t> working{works.size()};
    std::vector<std::thread> threads;
    for (const auto& work : works) {
        threads.emplace_back([&working, &work] {
            work();
            --working;
        });
    }
    while (working != 0) {
        for (int i = 0; i < burst; ++i) {
            for (std::thread& thread : threads)
                pthread_kill(thread.native_handle(), SIGUSR2);
        }
        CThread::sleep(3);
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(DutyCycle, EveryPercentFollowsTheStraightLineAndComesBackToItsStart) {
    for (int percent = 1; percent < 100; ++percent) {
        ThreadLoadingControl control{percent, 100 - percent};
        int runs = 0;
        for (int slot = 1; slot <= 100; ++slot) {
            runs += takeSlot(control) ? 1 : 0;
            EXPECT_FALSE(slot == 1 && runs == 1) << percent;
            // Never a whole slot off the line.
            EXPECT_LT(std::abs(100 * runs - percent * slot), 100) << percent << " at " << slot;
        }
        EXPECT_EQ(control.m_runCount + control.m_sleepCount, 0) << percent;
    }
}

TEST(Load, RefusedPercentsChangeNothing) {
    Support::LogCapture log(2);
    for (const bool held : {false, true}) {
        if (held) CThread::load(50);
        for (const int percent : {0, -1, 101}) {
            CThread::load(percent);
            EXPECT_EQ(log.count("thread load percent " + std::to_string(percent) + " is invalid!\n"),
                      held ? 2U : 1U);
        }
        if (held) awaitSignals(10);
        CThread::load(100);
        EXPECT_EQ(CThreadLoadingController::existing() != nullptr, held);
        struct sigaction current {};
        sigaction(SIGUSR2, nullptr, &current);
        EXPECT_EQ(current.sa_handler != SIG_DFL, held);
    }
    const auto start = Clock::now();
    for (int i = 0; i < 10; ++i)
        raise(SIGUSR2);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(10)) << "the handler sleeps";
}

TEST(Load, SignalsComeInTheSlotsOfThePattern) {
    CSemaphore done(0);
    std::thread half([&] {
        CThread::load(50);
        done.pend();
        CThread::load(100);
    });
    await([&] { return sent(half.native_handle()) != 0; });
    CThread::load(1);  // signalled in every slot but one of a hundred
    const int before = sent(half.native_handle());
    awaitSignals(99);
    const int during = sent(half.native_handle()) - before;
    done.post();
    half.join();
    EXPECT_NEAR(during, 50, 4);
}

TEST(Load, TheControllerRunsWhileThereAreThreadsToHoldBack) {
    Support::LogCapture log(3);
    for (int round = 0; round < 20; ++round) {
        CThread::load(30);
        CThread::load(70);
        EXPECT_TRUE(controller().looping());
        awaitSignals(2);
        CThread::load(100);
        EXPECT_FALSE(controller().looping());
    }
    const auto comeAndGo = [] {
        for (int round = 0; round < 100; ++round) {
            CThread::load(1 + round % 99);
            CThread::load(100);
        }
    };
    runTogether({comeAndGo, comeAndGo, comeAndGo, comeAndGo}, 0);
    await([] { return controller().isThreadOver(); });
    const int before = sent(pthread_self());
    CThread::sleep(10);
    EXPECT_EQ(sent(pthread_self()), before);
    EXPECT_TRUE(log.lines().empty());
}

TEST(Load, AnEndedThreadIsNeverSignalledThoughItsEntryStays) {
    std::thread forgetful([] {
        CThread::load(1);
        awaitSignals(3);
    });
    const pthread_t handle = forgetful.native_handle();
    forgetful.join();
    const int atEnd = sent(handle);
    CThread::load(1);
    // The system likes to give the handle to the next thread.
    std::thread innocent([] {
        const int before = sent(pthread_self());
        CThread::sleep(30);
        EXPECT_EQ(sent(pthread_self()), before);
    });
    awaitSignals(30);
    innocent.join();
    EXPECT_EQ(sent(handle), atEnd);
    CThread::load(100);
    EXPECT_TRUE(controller().looping());
}

TEST(Load, WithoutTheRightToRealTimeTheLogSaysSoAndNothingIsHeldBack) {
    s_asNormalThread = false;
    const rlimit none{0, 0};
    setrlimit(RLIMIT_RTPRIO, &none);
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    syscall(SYS_capget, &header, data);
    data[0].effective &= ~(1U << CAP_SYS_NICE);
    ASSERT_EQ(syscall(SYS_capset, &header, data), 0);
    Support::LogCapture log(3);
    CThread::load(30);
    EXPECT_EQ(log.count(", pthread create failed, errno=1\n"), 1U);
    EXPECT_TRUE(controller().isThreadOver());
    CThread::sleep(20);
    EXPECT_EQ(sent(pthread_self()), 0);
    CThread::load(100);
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST(Load, TheControllerHasTheHighestRealTimePriority) {
    s_asNormalThread = false;
    CThread::load(30);
    if (!controller().looping()) GTEST_SKIP() << "no right to SCHED_FIFO";
    await([] { return controller().getThreadID() != -1; });
    sched_param parameter{};
    sched_getparam(controller().getThreadID(), &parameter);
    EXPECT_EQ(parameter.sched_priority, sched_get_priority_max(SCHED_FIFO));
}

TEST(LoadDeathTest, AHeldSignalIsNotTakenAndHeldBackThreadsDoNotHinderTheEnd) {
    for (const sighandler_t held : {static_cast<sighandler_t>([](int) {}), SIG_IGN}) {
        EXPECT_EXIT((signal(SIGUSR2, held), CThread::load(50)), testing::KilledBySignal(SIGABRT),
                    "assertion \\(oldact.sa_handler == 0 && oldact.sa_sigaction == 0\\) failed in "
                    "Tovra::Fundo::CThreadLoadingController::CThreadLoadingController\\(\\): ");
    }
    const auto endHeldBack = [] {
        std::thread([] {
            for (;;)
                CThread::load(1);
        }).detach();
        CThread::load(1);
        awaitSignals(5);
        std::exit(7);
    };
    EXPECT_EXIT(endHeldBack(), testing::ExitedWithCode(7), "");
}

TEST(LoadStorm, SleepsLastWaitsHoldErrnoStaysAndASmallStackIsEnough) {
    CThread::load(99);  // installs the handler
    CThread::load(100);
    CSemaphore posted(0);
    const auto sleep = [] {
        const auto start = Clock::now();
        CThread::sleep(100);
        EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(99));
    };
    const auto wait = [&] {
        for (int i = 0; i < 50; ++i)
            EXPECT_EQ(posted.pend(), 0);
    };
    const auto post = [&] {
        for (int i = 0; i < 50; ++i) {
            posted.post();
            CThread::sleep(1);
        }
    };
    const auto keepErrno = [] {
        const auto start = Clock::now();
        errno = EXDEV;
        while (Clock::now() - start < std::chrono::milliseconds(50))
            ASSERT_EQ(errno, EXDEV);
    };
    runTogether({sleep, wait, post, keepErrno}, 20);

    const auto idle = [](CThreadLite& self) {
        while (self.looping())
            CThread::sleep(1);
    };
    CThreadLite small(TFunction1<void, CThreadLite&>(+idle), "Small", 64, 0, 32 * 1024);
    small.enableStackSize();
    ASSERT_TRUE(small.createThread());
    await([&] { return small.getThreadID() != -1; });
    for (int i = 0; i < 20000; ++i) {
        syscall(SYS_tgkill, getpid(), small.getThreadID(), SIGUSR2);
        sched_yield();
    }
    EXPECT_TRUE(small.destroyThread());
}

}  // namespace

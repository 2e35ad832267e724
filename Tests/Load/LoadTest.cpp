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
#include <map>
#include <mutex>
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

namespace {

std::atomic<bool> s_asNormalThread{true};  // so that the controller runs on any machine

// What the controller has sent, by handle. It stays, as the controller may run to the end of the process.
struct Sent {
    std::mutex mutex;
    std::map<pthread_t, int> signals;
};

Sent& allSent() {
    static Detail::Immortal<Sent> s_sent;
    return *s_sent;
}

int sent(pthread_t thread) {
    const std::lock_guard<std::mutex> lock(allSent().mutex);
    return allSent().signals[thread];
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
    {
        const std::lock_guard<std::mutex> lock(allSent().mutex);
        ++allSent().signals[thread];
    }
    return next<int(pthread_t, int)>("pthread_kill")(thread, signal);
}

extern "C" int pthread_attr_setinheritsched(pthread_attr_t* attributes, int inherit) noexcept {
    return next<int(pthread_attr_t*, int)>("pthread_attr_setinheritsched")(
        attributes, s_asNormalThread ? PTHREAD_INHERIT_SCHED : inherit);
}

namespace {

CThreadLoadingController& controller() { return *CThreadLoadingController::instance(); }

TEST(DutyCycle, EveryPercentFollowsTheStraightLineAndComesBackToItsStart) {
    for (int percent = 1; percent < 100; ++percent) {
        ThreadLoadingControl control{percent, 100 - percent};
        for (int cycle = 0; cycle < 2; ++cycle) {
            int runs = 0;
            for (int slot = 1; slot <= 100; ++slot) {
                const bool run = takeSlot(control);
                runs += run ? 1 : 0;
                EXPECT_FALSE(slot == 1 && run) << percent;
                // Never a whole slot off the line.
                EXPECT_LT(std::abs(100 * runs - percent * slot), 100) << percent << " at " << slot;
            }
            EXPECT_EQ(runs, percent);
            EXPECT_EQ(control.m_runCount + control.m_sleepCount, 0) << percent;
        }
    }
}

TEST(DutyCycle, ThirtyAndFiftyAreTheseSlots) {
    const auto slots = [](int percent) {
        ThreadLoadingControl control{percent, 100 - percent};
        std::string text;
        for (int slot = 0; slot < 20; ++slot)
            text += takeSlot(control) ? 'R' : 's';
        return text;
    };
    EXPECT_EQ(slots(30), "sRssRssRsssRssRssRss");
    EXPECT_EQ(slots(50), "sRsRsRsRsRsRsRsRsRsR");
}

TEST(Load, RefusedPercentsChangeNothing) {
    Support::LogCapture log(2);
    const std::vector<int> refused{0, -1, 101};
    for (const int percent : refused) {
        CThread::load(percent);
        EXPECT_EQ(log.count("thread load percent " + std::to_string(percent) + " is invalid!\n"), 1U);
    }
    CThread::load(100);
    EXPECT_EQ(CThreadLoadingController::existing(), nullptr);
    struct sigaction current {};
    sigaction(SIGUSR2, nullptr, &current);
    EXPECT_EQ(current.sa_handler, SIG_DFL);

    CThread::load(50);
    for (const int percent : refused)
        CThread::load(percent);
    awaitSignals(10);
}

TEST(Load, ASignalSleepsForAMillisecondInTheThreadItMeets) {
    CThread::load(99);
    CThread::load(100);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 10; ++i)
        raise(SIGUSR2);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(10));
}

TEST(Load, SignalsComeInTheSlotsOfThePattern) {
    std::atomic<bool> done{false};
    std::atomic<bool> added{false};
    std::thread half([&] {
        CThread::load(50);
        added = true;
        await([&] { return done.load(); });
        CThread::load(100);
    });
    await([&] { return added.load(); });
    CThread::load(1);  // signalled in every slot but one of a hundred
    const int before = sent(half.native_handle());
    awaitSignals(99);
    const int during = sent(half.native_handle()) - before;
    done = true;
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
        CThread::load(100);
    }
    await([&] { return controller().isThreadOver(); });
    const int before = sent(pthread_self());
    CThread::sleep(10);
    EXPECT_EQ(sent(pthread_self()), before);
    EXPECT_TRUE(log.lines().empty());
}

TEST(Load, ThreadsComeAndGoTogether) {
    Support::LogCapture log(3);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            for (int round = 0; round < 100; ++round) {
                CThread::load(1 + (i + round) % 99);
                CThread::load(100);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    await([&] { return controller().isThreadOver(); });
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
    std::thread innocent([&] {
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

// Rights are each thread's own, and each test has a process of its own.
void giveUpRealTime() {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_RTPRIO, &none);
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    syscall(SYS_capget, &header, data);
    data[0].effective &= ~(1U << CAP_SYS_NICE);
    ASSERT_EQ(syscall(SYS_capset, &header, data), 0);
}

TEST(Load, WithoutTheRightToRealTimeTheLogSaysSoAndNothingIsHeldBack) {
    s_asNormalThread = false;
    giveUpRealTime();
    Support::LogCapture log(3);
    CThread::load(30);
    ASSERT_EQ(log.lines().size(), 1U);
    char origin[64];
    std::snprintf(origin, sizeof origin, "] this:%p tid:%d, ", static_cast<void*>(&controller()),
                  CThread::getCurrentThreadID());
    EXPECT_EQ(log.count("[Src/Fundo3/Thread:"), 1U);
    EXPECT_EQ(log.count(origin + std::string("pthread create failed, errno=1\n")), 1U) << log.lines()[0];
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
    EXPECT_EQ(sched_getscheduler(controller().getThreadID()), SCHED_FIFO);
    sched_getparam(controller().getThreadID(), &parameter);
    EXPECT_EQ(parameter.sched_priority, sched_get_priority_max(SCHED_FIFO));
    CThread::load(100);
}

TEST(LoadDeathTest, ASignalThatSomebodyHoldsIsNotTaken) {
    for (const sighandler_t held : {static_cast<sighandler_t>([](int) {}), SIG_IGN}) {
        EXPECT_EXIT((signal(SIGUSR2, held), CThread::load(50)), testing::KilledBySignal(SIGABRT),
                    "assertion \\(oldact.sa_handler == 0 && oldact.sa_sigaction == 0\\) failed in "
                    "Tovra::Fundo::CThreadLoadingController::CThreadLoadingController\\(\\): ");
    }
}

TEST(LoadDeathTest, AProcessEndsWhileItsThreadsAreHeldBack) {
    const auto endHeldBack = [] {
        std::thread([] {
            CThread::load(1);
            for (;;)
                CThread::load(2);
        }).detach();
        CThread::load(1);
        awaitSignals(5);
        std::exit(7);
    };
    EXPECT_EXIT(endHeldBack(), testing::ExitedWithCode(7), "");
}

// Sends bursts to threads until they are done, with pauses in which they get on.
class Storm {
public:
    Storm() {
        CThread::load(99);  // installs the handler
        CThread::load(100);
    }

    template <class Work>
    void over(Work work) {
        m_threads.emplace_back([this, work] {
            ++m_working;
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_ids.push_back(CThread::getCurrentThreadID());
            }
            await([this] { return m_raging.load(); });
            work();
            --m_working;
            await([this] { return !m_raging.load(); });
        });
    }

    void rage(int burst) {
        await([this] { return m_working == static_cast<int>(m_threads.size()); });
        m_raging = true;
        while (m_working != 0) {
            for (int i = 0; i < burst; ++i) {
                const std::lock_guard<std::mutex> lock(m_mutex);
                for (const int id : m_ids)
                    syscall(SYS_tgkill, getpid(), id, SIGUSR2);
            }
            CThread::sleep(3);
        }
        m_raging = false;
        for (std::thread& thread : m_threads)
            thread.join();
    }

private:
    std::mutex m_mutex;
    std::vector<int> m_ids;
    std::vector<std::thread> m_threads;
    std::atomic<int> m_working{0};
    std::atomic<bool> m_raging{false};
};

TEST(LoadStorm, SleepsLastWaitsHoldAndErrnoStays) {
    using Clock = std::chrono::steady_clock;
    Storm storm;
    storm.over([] {
        for (int i = 0; i < 5; ++i) {
            const auto start = Clock::now();
            CThread::sleep(20);
            EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(19));
        }
    });
    CSemaphore posted(0);
    storm.over([&] {
        for (int i = 0; i < 50; ++i)
            EXPECT_EQ(posted.pend(), 0);
        EXPECT_NE(posted.pend(20), 0);
    });
    storm.over([&] {
        for (int i = 0; i < 50; ++i) {
            posted.post();
            CThread::sleep(1);
        }
    });
    CMutex mutex;
    int counted = 0;
    for (int i = 0; i < 2; ++i) {
        storm.over([&] {
            for (int round = 0; round < 2000; ++round) {
                const Detail::MutexGuard<CMutex> guard(mutex);
                ++counted;
            }
        });
    }
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    storm.over([&] {
        char byte;
        for (char i = 0; i < 20; ++i)
            EXPECT_TRUE(read(ends[0], &byte, 1) == 1 && byte == i);
    });
    storm.over([&] {
        for (char i = 0; i < 20; ++i) {
            CThread::sleep(5);
            EXPECT_EQ(write(ends[1], &i, 1), 1);
        }
    });
    storm.over([] {
        const auto start = Clock::now();
        errno = EXDEV;
        while (Clock::now() - start < std::chrono::milliseconds(50))
            ASSERT_EQ(errno, EXDEV);
    });
    storm.rage(20);
    EXPECT_EQ(counted, 4000);
}

TEST(LoadStorm, ASmallStackIsEnough) {
    struct Busy {
        void run(CThreadLite& self) {
            while (self.looping())
                CThread::sleep(1);
        }
    } busy;
    Storm handler;
    CThreadLite thread(TFunction1<void, CThreadLite&>(&Busy::run, &busy), "Small", 64, 0, 32 * 1024);
    thread.enableStackSize();
    ASSERT_TRUE(thread.createThread());
    await([&] { return thread.getThreadID() != -1; });
    for (int i = 0; i < 20000; ++i) {
        syscall(SYS_tgkill, getpid(), thread.getThreadID(), SIGUSR2);
        sched_yield();
    }
    EXPECT_TRUE(thread.destroyThread());
}

}  // namespace

#include "Fundo/Fundo3/Thread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "Fundo/Fundo3/ThreadLite.h"
#include "Fundo/Fundo3/ThreadManager.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo3/Thread/ThreadInternal.h"
#include "Support/Await.h"
#include "Support/Output.h"

using namespace Tovra::Fundo;
using Support::await;
using Support::contains;
using Support::Output;

namespace {

using Body = TFunction1<void, CThreadLite&>;

template <int ms>
void idle(CThreadLite& self) {
    while (self.looping())
        CThread::sleep(ms);
}

// A thread that is in the table: started, and past the first steps of its body.
void start(CThread& thread) {
    ASSERT_TRUE(thread.createThread());
    await([&] { return CThreadManager::instance()->hasThread(thread.getThreadID()); });
}

CThreadLite idler(const char* name, int stackSize = 0) { return {Body(idle<1>), name, 64, 0, stackSize}; }

// Runs a function as the body of a thread, to its end.
template <class Function>
void runThread(Function function, const char* name = "Run", int policy = 0, int stackSize = 0,
               bool enabled = true) {
    struct Wrapped {
        Function& function;
        void run(CThreadLite& self) { function(self); }
    } wrapped{function};
    CThreadLite thread(Body(&Wrapped::run, &wrapped), name, 64, policy, stackSize);
    if (enabled) thread.enableStackSize();
    EXPECT_TRUE(thread.createThread());
    await([&] { return thread.isThreadOver(); });
}

TEST(Thread, RunsUntilItIsAskedToStopAndCanStartAgain) {
    CThreadLite thread = idler("Again");
    EXPECT_TRUE(thread.isThreadOver());
    for (int round = 0; round < 3; ++round) {
        start(thread);
        EXPECT_TRUE(thread.looping());
        EXPECT_FALSE(thread.isThreadOver());
        EXPECT_TRUE(thread.destroyThread());
        EXPECT_FALSE(thread.looping());
        await([&] { return thread.isThreadOver(); });
        EXPECT_FALSE(CThreadManager::instance()->hasThread(thread.getThreadID()));
    }
}

TEST(Thread, RefusalsAreAnsweredAndLogged) {
    CThreadLite thread = idler("Refused");
    Output output(3);
    EXPECT_FALSE(thread.destroyThread());
    EXPECT_FALSE(thread.cancelThread());
    EXPECT_TRUE(thread.createThread());
    EXPECT_FALSE(thread.createThread());
    EXPECT_TRUE(thread.destroyThread());
    EXPECT_FALSE(thread.destroyThread());
    EXPECT_FALSE(thread.terminateThread());
    const std::string text = output.take();
    for (const char* line : {"CThread::DestroyThread() thread 'Refused' has exited!",
                             "CThread::cancelThread() thread 'Refused' not exist!",
                             "CThread::CreateThread() thread 'Refused' is still running!",
                             "CThread::DestroyThread() thread 'Refused' has been destroyed!"})
        EXPECT_TRUE(contains(text, line)) << line;
}

TEST(Thread, OneThatIsCancelledEndsByItselfAndOneThatStopsItselfDoesNotWait) {
    CThreadLite thread = idler("Cancelled");
    start(thread);
    EXPECT_TRUE(thread.cancelThread());
    await([&] { return thread.isThreadOver(); });
    runThread([](CThreadLite& self) { EXPECT_TRUE(self.destroyThread()); });
}

TEST(Thread, NamesAreCutAndNullIsNonamed) {
    CThreadLite nameless = idler(nullptr);
    EXPECT_STREQ(nameless.getThreadName(), "Nonamed");
    CThreadLite named = idler("0123456789012345678901234567890123456789");
    EXPECT_STREQ(named.getThreadName(), "0123456789012345678901234567890");
    named.setThreadName(nullptr);
    EXPECT_STREQ(named.getThreadName(), "Nonamed");
    char kernel[16] = "";
    runThread([&](CThreadLite&) { pthread_getname_np(pthread_self(), kernel, sizeof kernel); },
              "AVeryLongThreadName");
    EXPECT_STREQ(kernel, "AVeryLongThread");
}

TEST(Thread, StackSizesAreCheckedRaisedAndAppliedOnlyWhenEnabled) {
    size_t size = 0;
    const auto measure = [&](CThreadLite&) {
        pthread_attr_t attributes;
        pthread_getattr_np(pthread_self(), &attributes);
        pthread_attr_getstacksize(&attributes, &size);
        pthread_attr_destroy(&attributes);
    };
    Output output(3);
    CThreadLite negative = idler("Negative", -1);
    EXPECT_FALSE(negative.createThread());
    EXPECT_TRUE(negative.isThreadOver());
    runThread(measure);
    const size_t platform = size;
    runThread(measure, "Raised", 0, 100, false);
    EXPECT_EQ(size, platform);
    runThread(measure, "Applied", 0, 256 * 1024);
#ifdef __SANITIZE_THREAD__
    EXPECT_LT(size, platform);  // the sanitizer adds a share of its own
#else
    EXPECT_EQ(size, 256U * 1024);
#endif
    const std::string text = output.take();
    EXPECT_TRUE(contains(text, "invalid stack size, StackSize=-1"));
    EXPECT_TRUE(contains(text, "too small stack size, StackSize=100, adjust to 16k"));
}

TEST(Thread, AnUnknownPolicyIsToleratedHoweverSoonTheBodyEnds) {
    Output output(3);
    for (int round = 0; round < 200; ++round)
        runThread([](CThreadLite&) {}, "Policy", 7);
    EXPECT_TRUE(contains(output.take(), "CThread::CreateThread policy isn't set properly, policy = 7"));
}

TEST(Thread, NormalThreadsGetTheirNiceValueAndNoInheritedPolicy) {
    const auto expectNormal = [](CThreadLite&) {
        EXPECT_EQ(sched_getscheduler(0), SCHED_OTHER);
        EXPECT_EQ(getpriority(PRIO_PROCESS, 0), 1);
    };
    runThread(expectNormal);
    const sched_param lowest{sched_get_priority_min(SCHED_FIFO)};
    if (pthread_setschedparam(pthread_self(), SCHED_FIFO, &lowest) != 0)
        GTEST_SKIP() << "no right to SCHED_FIFO";
    runThread(expectNormal);
}

TEST(Thread, SleepsInFullThroughSignals) {
    struct sigaction action {};
    static std::atomic<int> s_signals{0};
    action.sa_handler = [](int) { ++s_signals; };
    sigaction(SIGUSR1, &action, nullptr);
    std::atomic<bool> done{false};
    std::thread sleeper([&] {
        const auto start = std::chrono::steady_clock::now();
        CThread::sleep(100);
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(99));
        done = true;
    });
    while (!done) {
        pthread_kill(sleeper.native_handle(), SIGUSR1);
        CThread::sleep(-5);
        CThread::sleep(3);
    }
    sleeper.join();
    EXPECT_GT(s_signals, 0);
}

TEST(Thread, ADeadlineIsMissedAMillisecondLater) {
    CThreadLite thread = idler("Deadline");
    thread.setTimeout(100000);
    EXPECT_FALSE(thread.isTimeout());
    thread.setTimeout(-1, CTime::getCurrentMilliSecond());
    EXPECT_TRUE(thread.isTimeout());
    thread.setTimeout(0);
    EXPECT_FALSE(thread.isTimeout());
    ThreadInternal record(nullptr, "Record", 64, 0, 0);
    record.setTimeout(5, 100);
    EXPECT_FALSE(record.isLate(105));
    EXPECT_TRUE(record.isLate(106));
    EXPECT_FALSE(CThread::setCurrentTimeout(5)) << "not a thread of the table";
    runThread([](CThreadLite& self) {
        EXPECT_TRUE(CThread::setCurrentTimeout(-1));
        EXPECT_TRUE(self.isTimeout());
    });
}

TEST(ThreadLite, ItsDelegateHasReturnedWhenItIsDestroyed) {
    struct Slow {
        std::atomic<bool> inside{false};
        bool returned = false;
        void run(CThreadLite& self) {
            inside = true;
            idle<1>(self);
            CThread::sleep(20);
            returned = true;
        }
    };
    for (const bool cancelled : {false, true}) {
        Slow slow;
        {
            CThreadLite thread(Body(&Slow::run, &slow), "Slow", 64, 0, 0);
            thread.createThread();
            await([&] { return slow.inside.load(); });
            if (cancelled) thread.cancelThread();
        }
        EXPECT_TRUE(slow.returned);
    }
}

TEST(ThreadManager, ShowsTheNewestFirstAndNamesThoseWhoseDeadlineHasPassed) {
    CThreadManager& manager = *CThreadManager::instance();
    std::string names = "stale";
    EXPECT_FALSE(manager.getTimeOutThreads(names));
    EXPECT_EQ(names, "");
    Output output(4);
    manager.dumpThreads();
    manager.registerMainThread();
    EXPECT_FALSE(manager.hasThread(CThread::getCurrentThreadID()));
    CString name = "untouched";
    EXPECT_FALSE(manager.getThreadNameByID(CThread::getCurrentThreadID(), name));
    EXPECT_STREQ(name.c_str(), "untouched");
    CThreadLite early = idler("Early");
    CThreadLite late = idler("ANameLongerThanTwentyFour");
    start(early);
    start(late);
    early.setTimeout(100000);
    late.setTimeout(-1);
    EXPECT_TRUE(manager.getThreadNameByID(late.getThreadID(), name));
    EXPECT_STREQ(name.c_str(), late.getThreadName());
    EXPECT_TRUE(manager.getTimeOutThreads(names));
    EXPECT_EQ(names, late.getThreadName() + ("(" + std::to_string(late.getThreadID()) + ")").substr(0, 6));
    manager.dumpThreads();
    late.setTimeout(0);
    EXPECT_FALSE(manager.getTimeOutThreads(names));

    const std::string text = output.take();
    size_t at = 0;
    const auto expectNext = [&](const char* format, int id) {
        char row[128];
        std::snprintf(row, sizeof row, format, id);
        at = text.find(row, at);
        EXPECT_NE(at, std::string::npos) << row << " in " << text;
    };
    expectNext("Threads:\n", 0);
    expectNext("               Name            TID  Prior State\n", 0);
    expectNext("                    Main   %8d   64  Normal\n", -1);
    expectNext("                    Main   %8d   64  Normal\n", CThread::getCurrentThreadID());
    expectNext("ANameLongerThanTwentyFour   %8d   64  Timeout\n", late.getThreadID());
    expectNext("                   Early   %8d   64  Normal\n", early.getThreadID());
}

TEST(ThreadStress, AThousandThreadsAreNamedDumpedStoppedAndDestroyed) {
    std::vector<std::unique_ptr<CThread>> threads;
    for (int i = 0; i < 1000; ++i) {
        threads.push_back(std::make_unique<CThreadLite>(Body(idle<100>), "Unnamed", 64, 0, 0));
        ASSERT_TRUE(threads.back()->createThread()) << i;
        threads.back()->setThreadName(("Worker " + std::to_string(i)).c_str());
    }
    for (const auto& thread : threads)
        await([&] { return CThreadManager::instance()->hasThread(thread->getThreadID()); });
    Output output(4);
    CThreadManager::instance()->dumpThreads();
    const std::string text = output.take();
    EXPECT_TRUE(contains(text, " Worker 0 "));
    EXPECT_TRUE(contains(text, " Worker 999 "));
    __atomic_store_n(&Fundo_printLogLevel, 3, __ATOMIC_RELAXED);
    for (size_t i = 0; i < threads.size(); ++i)
        EXPECT_TRUE(i % 50 == 0 ? threads[i]->destroyThread() : threads[i]->cancelThread());
}

// Starts, stops and questions race for the same objects; nothing may hang, and every body ends.
TEST(ThreadStress, StartsAndStopsFromManyThreadsLeaveNoBodyBehind) {
    Output output(2);
    static std::atomic<int> s_bodies{0};
    const auto counted = [](CThreadLite& self) {
        ++s_bodies;
        idle<1>(self);
        --s_bodies;
    };
    {
        CThreadLite thread(Body(+counted), "Contended", 64, 0, 0);
        std::vector<std::thread> users;
        for (int user = 0; user < 4; ++user) {
            users.emplace_back([&thread, user] {
                std::string names;
                for (int i = 0; i < 50; ++i) {
                    if (user % 2 == 0) thread.createThread();
                    if (user % 2 == 1) i % 3 == 0 ? thread.destroyThread() : thread.cancelThread();
                    thread.setTimeout(-1);
                    CThreadManager::instance()->getTimeOutThreads(names);
                }
            });
        }
        for (auto& user : users)
            user.join();
    }
    EXPECT_EQ(s_bodies, 0);
}

}  // namespace

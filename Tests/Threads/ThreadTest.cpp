#include "Fundo/Fundo3/Thread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "Fundo/Fundo3/ThreadLite.h"
#include "Fundo/Fundo3/ThreadManager.h"
#include "Fundo/Fundo3/Time.h"
#include "Support/Await.h"
#include "Support/Output.h"

using namespace Tovra::Fundo;
using Support::await;
using Support::Output;

namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

using Body = TFunction1<void, CThreadLite&>;

void idle(CThreadLite& self) {
    while (self.looping())
        CThread::sleep(1);
}

void end(CThreadLite&) {}

// A thread that is in the table: started, and past the first steps of its body.
void start(CThread& thread) {
    ASSERT_TRUE(thread.createThread());
    await([&] { return CThreadManager::instance()->hasThread(thread.getThreadID()); });
}

class Idle : public CThreadLite {
public:
    explicit Idle(const char* name, int priority = 64, int policy = 0, int stackSize = 0)
        : CThreadLite(Body(idle), name, priority, policy, stackSize) {}
    ~Idle() override {
        if (!isThreadOver()) destroyThread();
    }
};

TEST(Thread, RunsUntilItIsAskedToStopAndCanStartAgain) {
    Idle thread("Again");
    EXPECT_TRUE(thread.isThreadOver());
    for (int round = 0; round < 3; ++round) {
        start(thread);
        EXPECT_TRUE(thread.looping());
        EXPECT_FALSE(thread.isThreadOver());
        EXPECT_FALSE(thread.createThread());
        EXPECT_TRUE(thread.destroyThread());
        EXPECT_FALSE(thread.looping());
        await([&] { return thread.isThreadOver(); });
        EXPECT_FALSE(CThreadManager::instance()->hasThread(thread.getThreadID()));
    }
}

TEST(Thread, RefusalsAreAnsweredAndLogged) {
    Idle thread("Refused");
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

TEST(Thread, ACancelledThreadEndsByItself) {
    Idle thread("Cancelled");
    start(thread);
    EXPECT_TRUE(thread.cancelThread());
    EXPECT_FALSE(thread.cancelThread());
    await([&] { return thread.isThreadOver(); });
    start(thread);
    EXPECT_TRUE(thread.terminateThread() || thread.isThreadOver() || !thread.looping());
}

TEST(Thread, AThreadThatStopsItselfDoesNotWait) {
    std::atomic<int> answer{-1};
    struct Self {
        std::atomic<int>& answer;
        void run(CThreadLite& self) { answer = self.destroyThread() ? 1 : 0; }
    } self{answer};
    CThreadLite thread(Body(&Self::run, &self), "Self", 64, 0, 0);
    ASSERT_TRUE(thread.createThread());
    await([&] { return thread.isThreadOver(); });
    EXPECT_EQ(answer, 1);
}

TEST(Thread, NamesAreCutAndNullIsNonamed) {
    Idle nameless(nullptr);
    EXPECT_STREQ(nameless.getThreadName(), "Nonamed");
    Idle named("0123456789012345678901234567890123456789");
    EXPECT_STREQ(named.getThreadName(), "0123456789012345678901234567890");
    named.setThreadName(nullptr);
    EXPECT_STREQ(named.getThreadName(), "Nonamed");
}

TEST(Thread, TheKernelShowsTheFirstFifteenCharacters) {
    struct Names {
        char text[16] = "";
        void run(CThreadLite&) { pthread_getname_np(pthread_self(), text, sizeof text); }
    } names;
    CThreadLite thread(Body(&Names::run, &names), "AVeryLongThreadName", 64, 0, 0);
    thread.createThread();
    await([&] { return thread.isThreadOver(); });
    EXPECT_STREQ(names.text, "AVeryLongThread");
}

TEST(Thread, StackSizesAreCheckedRaisedAndAppliedOnlyWhenEnabled) {
    struct Stack {
        size_t size = 0;
        void run(CThreadLite&) {
            pthread_attr_t attributes;
            pthread_getattr_np(pthread_self(), &attributes);
            pthread_attr_getstacksize(&attributes, &size);
            pthread_attr_destroy(&attributes);
        }
        size_t measure(int bytes, bool enabled) {
            CThreadLite thread(Body(&Stack::run, this), "Stack", 64, 0, bytes);
            if (enabled) thread.enableStackSize();
            EXPECT_TRUE(thread.createThread());
            await([&] { return thread.isThreadOver(); });
            return size;
        }
    } stack;
    Output output(3);
    CThreadLite negative(Body(end), "Negative", 64, 0, -1);
    EXPECT_FALSE(negative.createThread());
    EXPECT_TRUE(negative.isThreadOver());
    const size_t applied = stack.measure(256 * 1024, true);
    const size_t platform = stack.measure(0, true);
#ifdef __SANITIZE_THREAD__
    EXPECT_LT(applied, platform);  // the sanitizer adds a share of its own
#else
    EXPECT_EQ(applied, 256U * 1024);
#endif
    EXPECT_EQ(stack.measure(100, false), platform);
    const std::string text = output.take();
    EXPECT_TRUE(contains(text, "invalid stack size, StackSize=-1"));
    EXPECT_TRUE(contains(text, "too small stack size, StackSize=100, adjust to 16k"));
}

TEST(Thread, AnUnknownPolicyIsToleratedHoweverSoonTheBodyEnds) {
    Output output(3);
    for (int round = 0; round < 200; ++round) {
        CThreadLite thread(Body(end), "Policy", 64, 7, 0);
        EXPECT_TRUE(thread.createThread());
    }
    EXPECT_TRUE(contains(output.take(), "CThread::CreateThread policy isn't set properly, policy = 7"));
}

TEST(Thread, NormalThreadsGetTheirNiceValueAndNoInheritedPolicy) {
    struct Probe {
        int policy = -1;
        int nice = -100;
        void run(CThreadLite&) {
            sched_param parameter;
            pthread_getschedparam(pthread_self(), &policy, &parameter);
            nice = getpriority(PRIO_PROCESS, 0);
        }
        void check() {
            CThreadLite thread(Body(&Probe::run, this), "Probe", 64, 0, 0);
            EXPECT_TRUE(thread.createThread());
            await([&] { return thread.isThreadOver(); });
            EXPECT_EQ(policy, SCHED_OTHER);
        }
    } probe;
    probe.check();
    EXPECT_EQ(probe.nice, 1);
    const sched_param lowest{sched_get_priority_min(SCHED_FIFO)};
    if (pthread_setschedparam(pthread_self(), SCHED_FIFO, &lowest) != 0)
        GTEST_SKIP() << "no right to SCHED_FIFO";
    probe.check();
}

TEST(Thread, SleepsInFullThroughSignals) {
    struct sigaction action {};
    static std::atomic<int> s_signals{0};
    action.sa_handler = [](int) { ++s_signals; };
    sigaction(SIGUSR1, &action, nullptr);
    std::atomic<bool> done{false};
    std::chrono::steady_clock::duration slept{};
    std::thread sleeper([&] {
        const auto start = std::chrono::steady_clock::now();
        CThread::sleep(100);
        slept = std::chrono::steady_clock::now() - start;
        done = true;
    });
    while (!done) {
        pthread_kill(sleeper.native_handle(), SIGUSR1);
        CThread::sleep(-5);
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    sleeper.join();
    EXPECT_GE(slept, std::chrono::milliseconds(99));
    EXPECT_GT(s_signals, 0);
}

TEST(Thread, ADeadlineIsMissedAMillisecondLater) {
    Idle thread("Deadline");
    const uint64_t now = CTime::getCurrentMilliSecond();
    EXPECT_FALSE(thread.isTimeout());
    thread.setTimeout(100000);
    EXPECT_FALSE(thread.isTimeout());
    thread.setTimeout(-1, now);
    EXPECT_TRUE(thread.isTimeout());
    thread.setTimeout(0);
    EXPECT_FALSE(thread.isTimeout());
    EXPECT_FALSE(CThread::setCurrentTimeout(5));
}

TEST(ThreadLite, ItsDelegateHasReturnedWhenItIsDestroyed) {
    struct Slow {
        std::atomic<bool> inside{false};
        bool returned = false;
        void run(CThreadLite& self) {
            inside = true;
            while (self.looping())
                CThread::sleep(1);
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

TEST(ThreadManager, DumpsTheNewestFirstWithTheirStates) {
    CThreadManager& manager = *CThreadManager::instance();
    {
        Output output(4);
        manager.dumpThreads();
        const std::string text = output.take();
        EXPECT_TRUE(contains(text, "Threads:"));
        EXPECT_TRUE(contains(text, "               Name            TID  Prior State"));
        EXPECT_TRUE(contains(text, "                    Main         -1   64  Normal"));
    }
    manager.registerMainThread();
    EXPECT_FALSE(manager.hasThread(CThread::getCurrentThreadID()));
    CString name = "untouched";
    EXPECT_FALSE(manager.getThreadNameByID(CThread::getCurrentThreadID(), name));
    EXPECT_STREQ(name.c_str(), "untouched");
    Idle a("A");
    Idle b("ANameLongerThanTwentyFour");
    start(a);
    start(b);
    b.setTimeout(-1);
    EXPECT_TRUE(manager.getThreadNameByID(b.getThreadID(), name));
    EXPECT_STREQ(name.c_str(), "ANameLongerThanTwentyFour");
    Output output(4);
    manager.dumpThreads();
    const std::string text = output.take();
    char rowA[128];
    char rowB[128];
    std::snprintf(rowA, sizeof rowA, "%24s   %8d   64  Normal", "A", a.getThreadID());
    std::snprintf(rowB, sizeof rowB, "ANameLongerThanTwentyFour   %8d   64  Timeout", b.getThreadID());
    EXPECT_LT(text.find(rowB), text.find(rowA)) << text;
    EXPECT_TRUE(contains(text, rowA)) << text;
}

TEST(ThreadManager, NamesThreadsPastTheirDeadline) {
    CThreadManager& manager = *CThreadManager::instance();
    std::string names = "stale";
    EXPECT_FALSE(manager.getTimeOutThreads(names));
    EXPECT_EQ(names, "");
    Idle early("Early");
    Idle late("Late");
    start(early);
    start(late);
    early.setTimeout(100000);
    late.setTimeout(-1);
    EXPECT_TRUE(manager.getTimeOutThreads(names));
    char expected[16];
    std::snprintf(expected, sizeof expected, "(%d)", late.getThreadID());
    EXPECT_EQ(names, "Late" + std::string(expected).substr(0, 6));
    late.setTimeout(0);
    EXPECT_FALSE(manager.getTimeOutThreads(names));
}

TEST(ThreadManager, SetsTheDeadlineOfTheCallingThread) {
    struct Own {
        bool found = false;
        bool late = false;
        void run(CThreadLite& self) {
            found = CThread::setCurrentTimeout(-1);
            late = self.isTimeout();
        }
    } own;
    CThreadLite thread(Body(&Own::run, &own), "Own", 64, 0, 0);
    thread.createThread();
    await([&] { return thread.isThreadOver(); });
    EXPECT_TRUE(own.found);
    EXPECT_TRUE(own.late);
}

void dream(CThreadLite& self) {
    while (self.looping())
        CThread::sleep(100);
}

TEST(ThreadStress, AThousandThreadsAreNamedDumpedStoppedAndDestroyed) {
    std::vector<std::unique_ptr<CThread>> threads;
    for (int i = 0; i < 1000; ++i) {
        threads.push_back(std::make_unique<CThreadLite>(Body(dream), "Unnamed", 64, 0, 0));
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
    threads.clear();
    std::string names;
    EXPECT_FALSE(CThreadManager::instance()->getTimeOutThreads(names));
}

// Starts, stops and questions race for the same objects; nothing may hang, and every body ends.
TEST(ThreadStress, StartsAndStopsFromManyThreadsLeaveNoBodyBehind) {
    Output output(2);
    static std::atomic<int> s_bodies{0};
    const auto counted = [](CThreadLite& self) {
        ++s_bodies;
        while (self.looping())
            CThread::sleep(1);
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

// Old threads, timers and locks, in one translation unit with the current ones.
#include "Fundo/Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Fundo3/Semaphore.h"
#include "Fundo/Fundo3/ThreadManager.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Timer.h"
#include "Fundo/Fundo3/TimerManager.h"
#include "Fundo/Mutex.h"
#include "Fundo/PrintLog.h"
#include "Fundo/Semaphore.h"
#include "Fundo/ThreadManager.h"
#include "Fundo/Timer.h"
#include "Fundo/TimerManager.h"
#include "Support/Await.h"
#include "Support/LogCapture.h"

using Support::await;
using Support::LogCapture;

namespace {

class Looper : public CThread {
public:
    explicit Looper(std::atomic<int>& inside) : CThread("Looper", 64, 0, 0), m_inside(inside) {}

    void ThreadProc() override {
        std::atomic<int>& inside = m_inside;
        ++inside;
        while (looping())
            Tovra::Fundo::CThread::sleep(1);
        --inside;
    }

private:
    std::atomic<int>& m_inside;
};

TEST(LegacyThread, RunsItsBodyUnderItsNameUntilItIsDestroyed) {
    std::atomic<int> inside{0};
    Looper thread(inside);
    EXPECT_TRUE(thread.IsThreadOver());
    EXPECT_EQ(thread.GetThreadID(), -1);
    thread.SetThreadName("Renamed");
    ASSERT_TRUE(thread.CreateThread());
    await([&] { return inside == 1; });
    EXPECT_FALSE(thread.IsThreadOver());
    EXPECT_FALSE(thread.CreateThread());
    EXPECT_TRUE(Tovra::Fundo::CThreadManager::instance()->hasThread(thread.GetThreadID()));

    LogCapture log(4);
    IThreadManager::instance()->DumpThreads();
    EXPECT_EQ(log.count("Renamed"), 1U);

    std::string late = "unchanged?";
    EXPECT_FALSE(IThreadManager::instance()->GetTimeOutThreads(late));
    thread.setTimeout(1, 1);
    EXPECT_TRUE(thread.IsTimeout());
    EXPECT_TRUE(IThreadManager::instance()->GetTimeOutThreads(late));
    EXPECT_EQ(late.find("Renamed("), 0U) << late;
    thread.SetTimeout(static_cast<unsigned long>(-1));
    EXPECT_FALSE(thread.IsTimeout());
    EXPECT_FALSE(CThread::SetCurrentTimeout(5)) << "this is no thread of the library";

    EXPECT_TRUE(thread.DestroyThread());
    EXPECT_EQ(inside, 0);
    EXPECT_FALSE(thread.DestroyThread());
}

TEST(LegacyThread, IsStoppedByTheDestructorOfItsOwner) {
    std::atomic<int> inside{0};
    {
        Looper thread(inside);
        ASSERT_TRUE(thread.CreateThread());
        await([&] { return inside == 1; });
    }
    EXPECT_EQ(inside, 0);
}

TEST(LegacyThreadDeathTest, NeedsAnOwner) {
    EXPECT_DEATH(CThreadDrived(nullptr, "Nobody", 64, 0, 0), "Src/Thread:.*m_owner != NULL");
}

TEST(LegacyThread, OddsAndEndsAnswerAsTheyAlwaysDid) {
    int argument = 0;
    EXPECT_EQ(ThreadBody(&argument), 0);
    std::atomic<int> inside{0};
    Looper thread(inside);
    EXPECT_EQ(thread.ShareSocket(7), 7);
    EXPECT_EQ(CThread::GetCurrentThreadID(), Tovra::Fundo::CThread::getCurrentThreadID());
    LogCapture log(5);
    EXPECT_EQ(IThreadManager::instance(), CThreadManager::instance());
    EXPECT_GE(log.count("CThreadManager::CThreadManager()>>>>>>>>>"), 1U);
}

// A subclass of two bases, so that its CObject is not where it begins itself.
struct Padding {
    virtual ~Padding() = default;
    long padding = 0;
};

struct Target : Padding, CObject {
    void take(unsigned int param) {
        last = param;
        ++calls;
    }
    void other(unsigned int param) { last = ~param; }
    void takeLong(unsigned long param) { lastLong = param; }

    std::atomic<unsigned int> last{0};
    std::atomic<unsigned long> lastLong{0};
    std::atomic<int> calls{0};
};

using Method = void (CObject::*)(unsigned int);

TEST(LegacyTimer, CallsAMethodOfAnObjectWithTheWholeParameter) {
    Target target;
    CTimer timer("Object");
    CObject* object = &target;
    EXPECT_TRUE(timer.Start(object, static_cast<Method>(&Target::take), 0U, 0U, 0xFFFFFFFFU, 0U));
    await([&] { return target.calls == 1; });
    EXPECT_EQ(target.last, 0xFFFFFFFFU);
    EXPECT_TRUE(timer.StopAndWait());
    EXPECT_TRUE(timer.Start(object, static_cast<Method>(&Target::other), 0U, 0U, 1U, 0U));
    await([&] { return target.last == ~1U; });
    EXPECT_TRUE(timer.StopAndWait());
    EXPECT_TRUE(timer.Start(object, static_cast<Method>(&Target::take), 10U, 10U, 5U, 0U));
    await([&] { return target.calls >= 3; });
    EXPECT_TRUE(timer.StopAndWait());
    EXPECT_EQ(target.last, 5U);
}

// Each call must reach the object and the parameter that it was armed with, whoever arms meanwhile.
TEST(LegacyTimer, MayBeRestartedByManyThreadsWithTargetsOfTheirOwn) {
    struct Numbered : CObject {
        void check(unsigned int param) { wrong = wrong || param != number; }
        unsigned int number = 0;
        std::atomic<bool> wrong{false};
    };
    Numbered targets[4];
    CTimer timer("Shared");
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < 4; ++i) {
        targets[i].number = i;
        threads.emplace_back([&, i] {
            const auto method = static_cast<Method>(&Numbered::check);
            for (int round = 0; round < 50; ++round)
                timer.Start(&targets[i], method, static_cast<unsigned int>(round % 2), 0U, i, 0U);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    timer.StopAndWait();
    for (const Numbered& target : targets)
        EXPECT_FALSE(target.wrong);
}

std::atomic<unsigned long> s_called{0};
void setCalled(unsigned long value) { s_called = value; }

TEST(LegacyTimer, CallsDelegatesAndForwardsItsState) {
    Target target;
    CTimer timer("First");
    EXPECT_TRUE(timer.Start({&Target::takeLong, &target}, 0UL, 0UL, 1UL << 40, 0UL));
    await([&] { return target.lastLong == 1UL << 40; });
    EXPECT_TRUE(timer.StopAndWait());
    EXPECT_TRUE(timer.IsCalled());

    const auto never = static_cast<unsigned long>(-1);
    EXPECT_TRUE(timer.Start(&setCalled, never, 0UL, 1UL, never));
    timer.SetName("Another");
    EXPECT_STREQ(timer.GetName(), "Another");
    EXPECT_TRUE(timer.IsStarted());
    EXPECT_FALSE(timer.IsRunning());
    LogCapture log(4);
    ITimerManager::instance()->DumpTimers();
    EXPECT_EQ(log.count("Another"), 1U);
    EXPECT_TRUE(timer.Stop(true)) << "fires the pending call";
    await([] { return s_called == 1; });
    EXPECT_TRUE(timer.StopAndWait());
    EXPECT_FALSE(timer.Stop(false));
}

TEST(LegacyDelegate, BecomesTheCurrentOneOfTheSameTarget) {
    using Current = Tovra::Fundo::TFunction1<void, unsigned long>;
    using Old = TFunction1<void, unsigned long>;
    Target target;
    const Old member(&Target::takeLong, &target);
    const Current current = member;
    EXPECT_EQ(current.type(), 1U);
    EXPECT_TRUE(current == Current(&Target::takeLong, &target));
    current(3);
    EXPECT_EQ(target.lastLong, 3U);
    EXPECT_EQ(static_cast<Current>(Old(&setCalled)).type(), 2U);
    EXPECT_TRUE(static_cast<Current>(Old(nullptr)).empty());
    EXPECT_TRUE(member != Old(&setCalled));
    EXPECT_TRUE(Old().empty());
}

TEST(LegacyMutex, ExcludesOtherThreadsAndCountsEntriesIfRecursive) {
    for (const CMutex::Type type : {CMutex::normal, CMutex::recursive}) {
        CMutex mutex(type);
        EXPECT_TRUE(mutex.Enter());
        EXPECT_EQ(mutex.TryEnter(), type == CMutex::recursive);
        EXPECT_TRUE(type == CMutex::normal || mutex.Leave());
        bool taken = true;
        std::thread([&] { taken = mutex.TryEnter(); }).join();
        EXPECT_FALSE(taken);
        EXPECT_TRUE(mutex.Leave());
    }
}

#if !defined(__SANITIZE_THREAD__)
// ThreadSanitizer stops at the destruction of a held mutex before the library can.
TEST(LegacyMutexDeathTest, CannotBeDestroyedWhileItIsHeld) {
    EXPECT_DEATH(
        {
            CMutex mutex(CMutex::normal);
            mutex.Enter();
        },
        "Src/Mutex:.*ret == 0");
}
#endif

TEST(LegacySemaphore, CountsAndWakes) {
    CSemaphore semaphore(2);
    EXPECT_EQ(semaphore.Pend(), 0);
    EXPECT_EQ(semaphore.Pend(), 0);
    std::atomic<bool> woken{false};
    std::thread waiter([&] {
        semaphore.Pend();
        woken = true;
    });
    EXPECT_FALSE(woken);
    EXPECT_EQ(semaphore.Post(), 0);
    waiter.join();
    EXPECT_TRUE(woken);
}

TEST(LegacySemaphoreDeathTest, RefusesACountBeyondThePlatform) {
    EXPECT_DEATH(CSemaphore semaphore(0x80000000U), "Src/Semaphore:.*KERN_SUCCESS == ret");
}

TEST(LegacyPrint, GlobalEntriesLogUnderTheLibrarysName) {
    LogCapture log(6);
    logDebug("debug %d\n", 1);
    logLibName(2, "old", "named\n");
    unsigned char bytes[] = {0xAB, 0xCD};
    DumpHex(bytes, sizeof bytes);
    ASSERT_GE(log.lines().size(), 3U);
    EXPECT_NE(log.lines()[0].find("[libFundo]"), std::string::npos);
    EXPECT_EQ(log.count("debug 1"), 1U);
    EXPECT_NE(log.lines()[1].find("[old]"), std::string::npos);
    EXPECT_EQ(log.count("cd "), 1U);
}

}  // namespace

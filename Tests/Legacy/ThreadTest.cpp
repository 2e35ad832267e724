// Old threads, timers and locks.
#include "Fundo/Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "Fundo/Mutex.h"
#include "Fundo/Semaphore.h"
#include "Fundo/ThreadManager.h"
#include "Fundo/Timer.h"
#include "Fundo/TimerManager.h"
#include "Support/Await.h"
#include "Support/LogCapture.h"

using namespace Support;

namespace {

std::atomic<int> s_inside{0};

struct Looper : CThread {
    Looper() : CThread("Looper", 64, 0, 0) {}
    void ThreadProc() override {
        ++s_inside;
        while (looping())
            Tovra::Fundo::CThread::sleep(1);
        --s_inside;
    }
};

TEST(LegacyThread, RunsItsBodyUnderItsNameUntilItIsDestroyed) {
    LogCapture log(5);
    IThreadManager* manager = IThreadManager::instance();
    EXPECT_GE(log.count("CThreadManager::CThreadManager()>>>>>>>>>"), 1U);
    {
        Looper thread;
        EXPECT_TRUE(thread.IsThreadOver() && thread.GetThreadID() == -1);
        thread.SetThreadName("Renamed");
        ASSERT_TRUE(thread.CreateThread());
        await([] { return s_inside == 1; });
        EXPECT_FALSE(thread.IsThreadOver() || thread.CreateThread());
        manager->DumpThreads();
        EXPECT_GT(log.count("Renamed") * log.count(std::to_string(thread.GetThreadID())), 0U);
        thread.setTimeout(1, 1);
        std::string late;
        EXPECT_TRUE(thread.IsTimeout() && manager->GetTimeOutThreads(late) && late.find("Renamed(") == 0);
        thread.SetTimeout(static_cast<unsigned long>(-1));
        EXPECT_FALSE(thread.IsTimeout() || manager->GetTimeOutThreads(late));
        EXPECT_TRUE(thread.DestroyThread() && s_inside == 0 && !thread.DestroyThread());
        ASSERT_TRUE(thread.CreateThread() && thread.ShareSocket(7) == 7);
        await([] { return s_inside == 1; });
    }
    EXPECT_EQ(s_inside, 0) << "the owner's end stops the thread";
    EXPECT_FALSE(CThread::SetCurrentTimeout(5)) << "this is no thread of the library";
    EXPECT_EQ(CThread::GetCurrentThreadID(), Tovra::Fundo::CThread::getCurrentThreadID());
}

struct Seen : CObject {
    unsigned int number = 0;
    std::atomic<bool> wrong{false};
    std::atomic<unsigned long> last{0};
};

// The string stands in front, so that the CObject is not where the object begins.
struct Target : std::string, Seen {
    void take(unsigned int param) { last = param; }
    void check(unsigned int param) { wrong = wrong || param != number; }
    void takeLong(unsigned long param) { last = param; }
};

// Each call must reach the object, method and parameter that it was armed with, whoever arms meanwhile.
TEST(LegacyTimer, CallsTheMethodItWasStartedWithWhoeverRestartsIt) {
    using Method = void (CObject::*)(unsigned int);
    Target targets[4];
    CTimer timer("Shared");
    EXPECT_TRUE(timer.Start(&targets[0], static_cast<Method>(&Target::take), 10U, 10U, 0xFFFFFFFFU, 0U));
    for (int round = 0; round < 2; ++round) {
        await([&] { return targets[0].last == 0xFFFFFFFFU; });
        targets[0].last = 0;
    }
    EXPECT_TRUE(timer.StopAndWait());
    targets[0].last = 0;

    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < 4; ++i) {
        targets[i].number = i;
        threads.emplace_back([&, i] {
            for (unsigned int round = 0; round < 50; ++round)
                timer.Start(&targets[i], static_cast<Method>(&Target::check), round % 2, 0U, i, 0U);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    timer.StopAndWait();
    for (const Target& each : targets)
        EXPECT_FALSE(each.wrong || each.last != 0);
}

std::atomic<unsigned long> s_called{0};
void setCalled(unsigned long value) { s_called = value; }

TEST(LegacyTimer, CallsDelegatesAndForwardsItsState) {
    using Current = Tovra::Fundo::TFunction1<void, unsigned long>;
    using Old = TFunction1<void, unsigned long>;
    Target target;
    const Old member(&Target::takeLong, &target);
    EXPECT_TRUE(Current(member) == Current(&Target::takeLong, &target) && member != Old(&setCalled));
    EXPECT_TRUE(Current(Old(&setCalled)) == Current(&setCalled) && Current(Old(nullptr)).empty());
    CTimer timer("First");
    EXPECT_TRUE(timer.Start(member, 0UL, 0UL, 1UL << 40, 0UL));
    await([&] { return target.last == 1UL << 40; });
    EXPECT_TRUE(timer.StopAndWait() && timer.IsCalled());
    const auto never = static_cast<unsigned long>(-1);
    EXPECT_TRUE(timer.Start(&setCalled, never, 0UL, 1UL, never));
    timer.SetName("Another");
    EXPECT_TRUE(timer.IsStarted() && !timer.IsRunning());
    LogCapture log(4);
    ITimerManager::instance()->DumpTimers();
    EXPECT_EQ(log.count(timer.GetName()) * log.count("Another"), 1U);
    EXPECT_TRUE(timer.Stop(true)) << "fires the pending call";
    await([] { return s_called == 1; });
    EXPECT_TRUE(timer.StopAndWait() && !timer.Stop(false));
}

TEST(LegacyLocks, ExcludeCountAndStopTheProcessWhenMisused) {
    for (const CMutex::Type type : {CMutex::normal, CMutex::recursive}) {
        CMutex mutex(type);
        EXPECT_TRUE(mutex.Enter() && mutex.TryEnter() == (type == CMutex::recursive));
        EXPECT_TRUE(type == CMutex::normal || mutex.Leave());
        std::thread([&] { EXPECT_FALSE(mutex.TryEnter()); }).join();
        EXPECT_TRUE(mutex.Leave());
    }
    CSemaphore semaphore(2);
    EXPECT_EQ(semaphore.Pend() + semaphore.Pend(), 0);
    std::atomic<bool> posted{false};
    std::thread waiter([&] { EXPECT_TRUE(semaphore.Pend() == 0 && posted); });
    posted = true;
    EXPECT_EQ(semaphore.Post(), 0);
    waiter.join();

    EXPECT_DEATH(CSemaphore tooMany(0x80000000U), "Src/Semaphore:.*KERN_SUCCESS == ret");
    EXPECT_DEATH(CThreadDrived(nullptr, "Nobody", 64, 0, 0), "Src/Thread:.*m_owner != NULL");
#if !defined(__SANITIZE_THREAD__)  // it stops at the destruction of a held mutex before the library can
    EXPECT_DEATH(CMutex(CMutex::normal).Enter(), "Src/Mutex:.*ret == 0");
#endif
}

}  // namespace

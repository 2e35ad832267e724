#include "Fundo/Fundo3/Timer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Fundo/Fundo3/Thread.h"
#include "Fundo/Fundo3/ThreadManager.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/TimerManager.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Timer/TimerManagerInternal.h"
#include "Support/Await.h"
#include "Support/Output.h"

using namespace Tovra::Fundo;
using Support::await;
using Support::contains;
using Support::Output;

namespace {

using Callback = TFunction1<void, unsigned long>;

// A callback that counts its calls and can be held inside.
class Target {
public:
    explicit Target(bool held = false) : m_held(held) {}
    Callback callback() { return Callback(&Target::call, this); }
    int calls() const { return m_calls; }
    int inside() const { return m_inside; }
    bool holds() const { return m_holds; }  // a call, not just one that has begun
    void hold() { m_held = true; }
    void release() { m_held = false; }

private:
    void call(unsigned long) {
        ++m_inside;
        ++m_calls;
        while (m_held) {
            m_holds = true;
            CThread::sleep(1);
        }
        --m_inside;
    }

    std::atomic<int> m_calls{0};
    std::atomic<int> m_inside{0};
    std::atomic<bool> m_held;
    std::atomic<bool> m_holds{false};
};

// Blocks so many callbacks at once.
std::vector<std::unique_ptr<CTimer>> crowd(int n, Target& held) {
    std::vector<std::unique_ptr<CTimer>> timers;
    for (int i = 0; i < n; ++i) {
        timers.push_back(std::make_unique<CTimer>("Crowd"));
        EXPECT_TRUE(timers.back()->start(held.callback(), static_cast<unsigned>(i % 40), 0, 0, 0));
    }
    await([&] { return held.inside() == n; });
    return timers;
}

// The timer table, then the thread table.
std::string tables() {
    Output output(4);
    CTimerManager::instance()->dumpTimers();
    CThreadManager::instance()->dumpThreads();
    return output.take();
}

// Keeps the manager from ticking, so that what was armed meanwhile comes due in one tick.
using Stall = Detail::MutexGuard<CRecursiveMutex>;

TEST(Timer, FiresOnceNotBeforeItsTimeAndPassesTheParameter) {
    static std::atomic<uint64_t> s_called{0};
    CTimer timer("Once");
    const auto fire = [](unsigned long parameter) { s_called = CTime::getCurrentMilliSecond() + parameter; };
    auto& manager = *TimerManagerInternal::instance();
    uint64_t tick = 0;
    {
        const Stall stall(manager.m_mutex);
        tick = manager.now();
        EXPECT_TRUE(timer.start(Callback(+fire), 50, 0, 1000000, 0));
        EXPECT_TRUE(timer.isStarted());
    }
    await([&] { return s_called != 0; });
    // The delay counts from the last tick.
    EXPECT_GT(s_called, tick + 50 + 1000000);
    EXPECT_TRUE(timer.isCalled());
    EXPECT_FALSE(timer.isStarted());
}

TEST(Timer, WithoutDelayCallsAtOnceButNotTwiceAtTheSameTimeAndIsWaitedFor) {
    Output output(4);
    Target target(true);
    CTimer timer("Waited");
    EXPECT_TRUE(timer.start(target.callback(), 0, 0, 0, 0));
    EXPECT_TRUE(timer.isCalled());
    EXPECT_FALSE(timer.isStarted());
    EXPECT_TRUE(timer.isRunning());
    await([&] { return target.inside() == 1; });
    EXPECT_FALSE(timer.start(target.callback(), 0, 0, 0, 0));
    std::atomic<bool> stopped{false};
    std::thread stopper([&] {
        timer.stopAndWait();
        stopped = true;
    });
    CThread::sleep(50);
    EXPECT_FALSE(stopped);
    target.release();
    stopper.join();
    EXPECT_EQ(target.inside(), 0);
    EXPECT_EQ(target.calls(), 1);
    EXPECT_TRUE(contains(output.take(), "CTimer::Stop 'Waited' wait callback exit!"));
}

TEST(Timer, APeriodicTimerGoesOnAndLosesTheTicksOfALongCall) {
    Target target;
    CTimer timer("Periodic");
    EXPECT_TRUE(timer.start(target.callback(), 10, 10, 0, 0));
    await([&] { return target.calls() >= 3; });
    EXPECT_FALSE(timer.isCalled());
    target.hold();
    await([&] { return target.holds(); });
    const int calls = target.calls();
    CThread::sleep(60);
    EXPECT_EQ(target.calls(), calls);
    target.release();
    await([&] { return target.calls() > calls; });
}

TEST(Timer, AfterAStallAPeriodicTimerFiresOnceAndKeepsItsPhase) {
    TimerInternal timer("Phase");
    auto& manager = *TimerManagerInternal::instance();
    Target target;
    {
        const Stall stall(manager.m_mutex);
        const uint64_t now = manager.now();
        timer.m_fun = target.callback();
        timer.m_period = 100;
        timer.m_nextTime = now - 730;
        manager.addTimer(&timer);
        EXPECT_TRUE(timer.run(manager));
        EXPECT_EQ(timer.m_nextTime, now + 70);
        manager.removeTimer(&timer);
        manager.removeTimer(&timer);
    }
    await([&] { return timer.m_thread == nullptr; });
    EXPECT_EQ(target.calls(), 1);
}

TEST(Timer, StopTellsWhetherItWasArmedAndCanFireAPendingOneShot) {
    Target target;
    CTimer timer(nullptr);
    EXPECT_STREQ(timer.getName(), "Nonamed");
    timer.setName("0123456789012345678901234567890123456789");
    EXPECT_STREQ(timer.getName(), "0123456789012345678901234567890");
    EXPECT_FALSE(timer.stop(true));
    for (const unsigned period : {100000U, 0U}) {
        timer.start(target.callback(), 100000, period, 0, 0);
        EXPECT_TRUE(timer.stop(period != 0));
        EXPECT_FALSE(timer.stop(true));
        EXPECT_FALSE(timer.isCalled());
    }
    timer.stopAndWait();
    EXPECT_EQ(target.calls(), 0);
    timer.start(target.callback(), 100000, 0, 0, 0);
    EXPECT_TRUE(timer.stop(true));
    EXPECT_TRUE(timer.isCalled());
    await([&] { return target.calls() == 1; });
}

TEST(Timer, ACallbackMayStopRearmAndDestroyItsOwnTimer) {
    struct Self {
        CTimer* timer = new CTimer("Self");
        std::atomic<int> calls{0};
        std::atomic<bool> destroyed{false};
        void call(unsigned long) {
            if (++calls < 5) {
                timer->stopAndWait();
                timer->start(Callback(&Self::call, this), 1, 0, 0, 0);
                return;
            }
            delete timer;
            destroyed = true;
        }
    } self;
    self.timer->start(Callback(&Self::call, &self), 1, 1, 0, 0);
    await([&] { return self.destroyed.load(); });
    EXPECT_EQ(self.calls, 5);
}

TEST(Timer, IsDestroyedEvenIfItsCallbackArmsItAgain) {
    struct Stubborn {
        CTimer* timer = new CTimer("Stubborn");
        std::atomic<int> calls{0};
        void call(unsigned long) {
            if (++calls != 1) return;
            await([this] { return !timer->isStarted(); });
            timer->start(Callback(&Stubborn::call, this), 1, 1, 0, 0);
        }
    } stubborn;
    stubborn.timer->start(Callback(&Stubborn::call, &stubborn), 1, 100000, 0, 0);
    await([&] { return stubborn.calls == 1; });
    delete stubborn.timer;
    const int calls = stubborn.calls;
    CThread::sleep(30);
    EXPECT_EQ(stubborn.calls, calls);
}

TEST(Timer, APeriodCanBeChangedInFlight) {
    Target target;
    CTimer timer("Period");
    timer.start(target.callback(), 100000, 100000, 0, 0);
    EXPECT_TRUE(timer.setPeriodTime(10));  // brings the next call 99990 ms forward
    await([&] { return target.calls() >= 2; });
    timer.setPeriodTime(0);
    await([&] { return timer.isCalled(); });
    EXPECT_FALSE(timer.isStarted());
    timer.setPeriodTime(7);  // must not put it into the list that it is freed from
}

TEST(TimerManager, TimersOfOneDueTimeFireInReverseOrderOfArming) {
    auto& manager = *TimerManagerInternal::instance();
    const Stall stall(manager.m_mutex);
    TimerInternal timers[3] = {TimerInternal("Later"), TimerInternal("First"), TimerInternal("Second")};
    for (TimerInternal& timer : timers) {
        timer.m_nextTime = manager.now() + (&timer == timers ? 200000 : 100000);
        manager.addTimer(&timer);
    }
    EXPECT_EQ(timers[2].m_next, &timers[1]);
    EXPECT_EQ(timers[1].m_next, &timers[0]);
    EXPECT_EQ(timers[0].m_next, nullptr);
    for (TimerInternal& timer : timers)
        manager.removeTimer(&timer);
}

TEST(TimerManager, ABlockedCallbackShowsInBothTables) {
    Target target(true);
    CTimer timer("Blocked");
    timer.start(target.callback(), 1, 100000, 0, 1);  // by the thread that the table must show
    CTimer longest("Longest");
    Target other(true);
    longest.start(other.callback(), 0, 0, 0, UINT_MAX);
    await([&] { return target.inside() == 1 && other.inside() == 1; });
    std::string names;
    await([&] { return CThreadManager::instance()->getTimeOutThreads(names); });
    EXPECT_TRUE(contains(names, "Blocked(")) << names;
    EXPECT_FALSE(contains(names, "Longest(")) << names;
    const std::string text = tables();
    EXPECT_TRUE(
        contains(text, "            Name            NextTime RunningTime Period   Used/Timeout State"));
    for (const char* part :
         {"                 Blocked ", "/     1 Running", "64  Timeout", "            TimerManager "})
        EXPECT_TRUE(contains(text, part)) << part;
    EXPECT_FALSE(contains(text.substr(0, text.find("Threads:")), "Longest"));
    target.release();
    other.release();
    timer.stopAndWait();
    longest.stopAndWait();
    await([&] { return !CThreadManager::instance()->getTimeOutThreads(names); });
    EXPECT_TRUE(contains(tables(), "                [Pooled] "));
}

TEST(TimerManager, RunningTimeIsSummedWhileStatisticsAreOn) {
    Target target(true);
    CTimer timer("Statistics");
    timer.start(target.callback(), 30, 100000, 0, 0);
    timer.enableStat(true);
    await([&] { return target.inside() == 1; });
    CThread::sleep(30);
    target.release();
    await([&] { return !timer.isRunning(); });
    const std::string text = tables();
    unsigned long long running = 0;
    ASSERT_EQ(std::sscanf(text.c_str() + text.find("Statistics"), "Statistics %*u %llu", &running), 1);
    EXPECT_GE(running, 30U);
}

// Lets so many callbacks return together, and waits for the number of idle workers: surplus ones end after
// the callback that cut them off.
void awaitIdleAfter(int n, int idle) {
    Target target(true);
    auto timers = crowd(n, target);
    target.release();
    timers.clear();
    await([idle] {
        const std::string text = tables();
        int found = 0;
        for (size_t at = text.find("[Pooled]"); at != std::string::npos; at = text.find("[Pooled]", at + 1))
            ++found;
        return found == idle;
    });
}

TEST(TimerManager, ThePoolGrowsOnDemandAndIsCutToItsLimit) {
    awaitIdleAfter(5, 5);
    CTimerManager::instance()->limitIdlePooled(2);
    awaitIdleAfter(1, 2);
    CTimerManager::instance()->limitIdlePooled(0);
    awaitIdleAfter(4, 4);
    CTimerManager::instance()->limitIdlePooled(-3);
    awaitIdleAfter(6, 6);
}

TEST(TimerStress, FiveHundredCallbacksBlockedAtOnceHoldUpNoOther) {
    Target blocked(true);
    auto timers = crowd(500, blocked);
    Target free;
    CTimer timer("Free");
    timer.start(free.callback(), 10, 10, 0, 0);
    await([&] { return free.calls() >= 3; });
    blocked.release();
    timers.clear();
    EXPECT_EQ(blocked.calls(), 500);
}

TEST(TimerStress, AThousandTimersAreArmedRearmedStoppedFromCallbacksAndDestroyed) {
    constexpr size_t kTimers = 1000;
    static std::vector<std::unique_ptr<CTimer>> s_timers;
    static std::atomic<int> s_calls{0};
    for (size_t i = 0; i < kTimers; ++i)
        s_timers.push_back(std::make_unique<CTimer>("Stress"));
    // Each call meddles with another timer: stops it, or arms it anew.
    const auto meddle = [](unsigned long self) {
        ++s_calls;
        CTimer& other = *s_timers[(self * 7919 + 13) % kTimers];
        if (self % 3 == 0) other.stop(self % 2 == 0);
        if (self % 3 == 1) other.setPeriodTime(static_cast<unsigned>(self % 50));
    };
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::minstd_rand random(seed);
    for (int round = 0; round < 5; ++round) {
        for (size_t i = 0; i < kTimers; ++i)
            s_timers[i]->start(Callback(+meddle), static_cast<unsigned>(random() % 100),
                               random() % 2 == 0 ? 0 : 20, i, 1000);
        const int calls = s_calls;
        await([&] { return s_calls > calls + 500; });
    }
    EXPECT_TRUE(contains(tables(), "Stress"));
    for (auto& timer : s_timers)
        timer->stopAndWait();
    s_timers.clear();
}

// A callback that is still running, and comes back, while the process exits.
TEST(TimerExit, AWorkerThatComesBackDuringExitHarmsNothing) {
    EXPECT_EXIT(
        {
            static std::atomic<bool> s_inside{false};
            static std::atomic<bool> s_leaving{false};
            // Made first, so it ends after the manager's exit handler has stopped the ticks.
            static struct Late {
                ~Late() {
                    s_leaving = true;
                    CThread::sleep(30);
                    CTimerManager::instance()->dumpTimers();
                    CThreadManager::instance()->dumpThreads();
                }
            } s_late;
            static auto* s_abandoned = new CTimer("Abandoned");
            static CTimer s_destroyed("Destroyed");
            const auto linger = [](unsigned long) {
                s_inside = true;
                while (!s_leaving)
                    CThread::sleep(1);
            };
            s_abandoned->start(Callback(+linger), 0, 10, 0, 0);
            await([] { return s_inside.load(); });
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace

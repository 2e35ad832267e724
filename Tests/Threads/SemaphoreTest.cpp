#include "Fundo/Fundo3/Semaphore.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>
#include <vector>

#include "Fundo/Fundo3/Thread.h"
#include "Platform/Semaphore.h"
#include "Support/Await.h"

using namespace Tovra::Fundo;
using namespace Tovra::Fundo::Platform;
using Support::await;

namespace {

class SemaphoreLine : public testing::Test {
protected:
    SemaphoreLine() { semaphore_create(&m_semaphore, 0); }
    ~SemaphoreLine() override { EXPECT_EQ(semaphore_destroy(&m_semaphore), KERN_SUCCESS); }

    void awaitBalance(int64_t balance) const {
        await([&] { return m_semaphore.balance == balance; });
    }

    semaphore_t m_semaphore;
};

std::atomic<int> s_signals{0};

void installHandler(int flags) {
    struct sigaction action {};
    action.sa_handler = [](int) { ++s_signals; };
    action.sa_flags = flags;
    sigaction(SIGUSR1, &action, nullptr);
}

TEST_F(SemaphoreLine, ReleasesWaitersInTheOrderOfTheirComing) {
    constexpr int kWaiters = 16;
    std::vector<int> order;
    std::atomic<int> released{0};
    std::vector<std::thread> waiters;
    const SemaphoreWaiter* last = nullptr;
    for (int i = 0; i < kWaiters; ++i) {
        waiters.emplace_back([&, i] {
            semaphore_wait(&m_semaphore);
            order.push_back(i);  // one at a time: the next post comes after this one is counted
            ++released;
        });
        await([&, before = last] {
            pthread_mutex_lock(&m_semaphore.lock);
            last = m_semaphore.last;
            pthread_mutex_unlock(&m_semaphore.lock);
            return last != before;
        });
    }
    for (int i = 0; i < kWaiters; ++i) {
        semaphore_signal(&m_semaphore);
        await([&] { return released == i + 1; });
    }
    for (auto& waiter : waiters)
        waiter.join();
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_F(SemaphoreLine, IsHeldOpenByAWaiterFromWhomAPostIsNotSnatched) {
    std::thread waiter([&] { semaphore_wait(&m_semaphore); });
    awaitBalance(-1);
    EXPECT_EQ(semaphore_destroy(&m_semaphore), EBUSY);
    semaphore_signal(&m_semaphore);
    EXPECT_EQ(semaphore_timedwait(&m_semaphore), ETIMEDOUT);
    waiter.join();
}

TEST_F(SemaphoreLine, OnlyAHandlerThatDoesNotRestartInterruptsAWaitWhichTakesNoCountThen) {
    for (const int flags : {0, SA_RESTART}) {
        installHandler(flags);
        std::atomic<int> result{-1};
        std::thread waiter([&] { result = semaphore_wait(&m_semaphore); });
        awaitBalance(-1);
        for (int i = 0; flags == 0 ? result == -1 : i < 100; ++i) {
            pthread_kill(waiter.native_handle(), SIGUSR1);
            std::this_thread::yield();
        }
        EXPECT_EQ(result, flags == 0 ? EINTR : -1);
        EXPECT_EQ(m_semaphore.balance, flags == 0 ? 0 : -1);
        if (flags != 0) semaphore_signal(&m_semaphore);
        waiter.join();
    }
    EXPECT_GT(s_signals, 1);
}

// Posts and interruptions race for the same waiters; each post must release exactly one wait.
TEST_F(SemaphoreLine, UnderAStormOfSignalsNoCountIsLostOrMade) {
    installHandler(0);
    constexpr int kWaiters = 4;
    constexpr int kPosts = 4000;
    std::atomic<int> taken{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < kWaiters; ++i) {
        waiters.emplace_back([&] {
            while (taken < kPosts) {
                if (semaphore_wait(&m_semaphore) == KERN_SUCCESS) ++taken;
            }
        });
    }
    for (int i = 0; i < kPosts; ++i) {
        semaphore_signal(&m_semaphore);
        pthread_kill(waiters[static_cast<size_t>(i % kWaiters)].native_handle(), SIGUSR1);
    }
    await([&] { return taken >= kPosts; });
    for (int i = 0; i < kWaiters; ++i)
        semaphore_signal(&m_semaphore);
    for (auto& waiter : waiters)
        waiter.join();
    EXPECT_EQ(m_semaphore.balance + taken, kPosts + kWaiters);
}

TEST(Semaphore, ATimedPendSleepsInStepsBeforeItLooks) {
    using Clock = std::chrono::steady_clock;
    struct {
        int count;
        uint32_t timeout;
        int result;
        int atLeast;
    } const cases[] = {{1, 100, 0, 10}, {0, 0, -1, 10}, {0, 5, -1, 10}, {0, 19, -1, 10}, {0, 59, -1, 50}};
    for (const auto& now : cases) {
        CSemaphore semaphore(now.count);
        const auto start = Clock::now();
        EXPECT_EQ(semaphore.pend(now.timeout), now.result);
        EXPECT_EQ(semaphore.tryPend(), -1);
        EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(now.atLeast)) << now.timeout;
    }
}

TEST(Semaphore, TakesWhatIsThereAndSeesAPostThatComesMeanwhile) {
    CSemaphore semaphore(2);
    EXPECT_EQ(semaphore.tryPend() + semaphore.pend(), 0);
    EXPECT_EQ(semaphore.tryPend(), -1);
    std::thread poster([&] {
        CThread::sleep(25);
        EXPECT_EQ(semaphore.post(), 0);
    });
    EXPECT_EQ(semaphore.pend(100000), 0);
    poster.join();
}

TEST(SemaphoreDeathTest, MisuseEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(CSemaphore(-1),
                 "assertion \\(KERN_SUCCESS == ret\\) failed in "
                 "Tovra::Fundo::CSemaphore::CSemaphore\\(int\\): Src/Fundo3/Semaphore\\(");
    EXPECT_DEATH(
        {
            installHandler(0);
            const pthread_t self = pthread_self();
            std::thread([self] {
                for (;;) {
                    pthread_kill(self, SIGUSR1);
                    std::this_thread::yield();
                }
            }).detach();
            CSemaphore(0).pend();
        },
        "assertion \\(KERN_SUCCESS == ret\\) failed in int Tovra::Fundo::CSemaphore::pend\\(\\): ");
}

}  // namespace

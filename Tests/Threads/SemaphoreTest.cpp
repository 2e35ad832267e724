#include "Fundo/Fundo3/Semaphore.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>
#include <vector>

#include "Platform/Semaphore.h"

using namespace Tovra::Fundo;
using namespace Tovra::Fundo::Platform;

namespace {

class SemaphoreLine : public testing::Test {
protected:
    SemaphoreLine() { semaphore_create(&m_semaphore, 0); }
    ~SemaphoreLine() override { EXPECT_EQ(semaphore_destroy(&m_semaphore), KERN_SUCCESS); }

    void awaitBalance(int64_t balance) const {
        while (m_semaphore.balance != balance)
            std::this_thread::yield();
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
    for (int i = 0; i < kWaiters; ++i) {
        waiters.emplace_back([&, i] {
            semaphore_wait(&m_semaphore);
            order.push_back(i);  // one at a time: the next post comes after this one is counted
            ++released;
        });
        // The line is written under the lock that follows the balance, and read under it.
        awaitBalance(-i - 1);
        const SemaphoreWaiter* last = nullptr;
        static const SemaphoreWaiter* s_before = nullptr;
        do {
            pthread_mutex_lock(&m_semaphore.lock);
            last = m_semaphore.last;
            pthread_mutex_unlock(&m_semaphore.lock);
        } while (last == s_before);
        s_before = last;
    }
    for (int i = 0; i < kWaiters; ++i) {
        semaphore_signal(&m_semaphore);
        while (released != i + 1)
            std::this_thread::yield();
    }
    for (auto& waiter : waiters)
        waiter.join();
    for (int i = 0; i < kWaiters; ++i)
        EXPECT_EQ(order[static_cast<size_t>(i)], i);
}

TEST_F(SemaphoreLine, APostIsNotSnatchedFromTheWaiterItIsFor) {
    std::thread waiter([&] { semaphore_wait(&m_semaphore); });
    awaitBalance(-1);
    semaphore_signal(&m_semaphore);
    EXPECT_EQ(semaphore_timedwait(&m_semaphore), ETIMEDOUT);
    waiter.join();
}

TEST_F(SemaphoreLine, AnInterruptedWaitTakesNoCount) {
    installHandler(0);
    std::atomic<int> result{-1};
    std::thread waiter([&] { result = semaphore_wait(&m_semaphore); });
    awaitBalance(-1);
    while (result == -1) {
        pthread_kill(waiter.native_handle(), SIGUSR1);
        std::this_thread::yield();
    }
    waiter.join();
    EXPECT_EQ(result, EINTR);
    EXPECT_EQ(m_semaphore.balance, 0);
}

TEST_F(SemaphoreLine, ARestartingHandlerDoesNotInterrupt) {
    installHandler(SA_RESTART);
    std::atomic<int> result{-1};
    std::thread waiter([&] { result = semaphore_wait(&m_semaphore); });
    awaitBalance(-1);
    for (int i = 0; i < 100; ++i) {
        pthread_kill(waiter.native_handle(), SIGUSR1);
        std::this_thread::yield();
    }
    EXPECT_EQ(result, -1);
    semaphore_signal(&m_semaphore);
    waiter.join();
    EXPECT_EQ(result, KERN_SUCCESS);
    EXPECT_GT(s_signals, 0);
}

// Posts and interruptions race for the same waiters; each post must release exactly one wait.
TEST_F(SemaphoreLine, UnderAStormOfSignalsNoCountIsLostOrMade) {
    installHandler(0);
    constexpr int kWaiters = 4;
    constexpr int kPosts = 4000;
    std::atomic<int> taken{0};
    std::atomic<int> interrupted{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < kWaiters; ++i) {
        waiters.emplace_back([&] {
            while (taken < kPosts) {
                ++(semaphore_wait(&m_semaphore) == KERN_SUCCESS ? taken : interrupted);
            }
        });
    }
    for (int i = 0; i < kPosts; ++i) {
        semaphore_signal(&m_semaphore);
        pthread_kill(waiters[static_cast<size_t>(i % kWaiters)].native_handle(), SIGUSR1);
    }
    while (taken < kPosts)
        std::this_thread::yield();
    EXPECT_EQ(taken, kPosts);
    for (int i = 0; i < kWaiters; ++i)
        semaphore_signal(&m_semaphore);
    for (auto& waiter : waiters)
        waiter.join();
    EXPECT_EQ(m_semaphore.balance + taken, kPosts + kWaiters);
}

TEST_F(SemaphoreLine, CannotEndWhileAThreadWaits) {
    std::thread waiter([&] { semaphore_wait(&m_semaphore); });
    awaitBalance(-1);
    EXPECT_EQ(semaphore_destroy(&m_semaphore), EBUSY);
    semaphore_signal(&m_semaphore);
    waiter.join();
}

TEST(Semaphore, TryPendTakesWhatIsThere) {
    CSemaphore semaphore(2);
    EXPECT_EQ(semaphore.tryPend(), 0);
    EXPECT_EQ(semaphore.tryPend(), 0);
    EXPECT_EQ(semaphore.tryPend(), -1);
    EXPECT_EQ(semaphore.post(), 0);
    EXPECT_EQ(semaphore.pend(), 0);
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
        EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(now.atLeast)) << now.timeout;
    }
}

TEST(Semaphore, ATimedPendSeesAPostThatComesMeanwhile) {
    CSemaphore semaphore(0);
    std::thread poster([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
        semaphore.post();
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

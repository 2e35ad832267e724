#include "Fundo/Fundo3/Signal.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "Support/Await.h"

using namespace Tovra::Fundo;

namespace {

using Signal = TSignal5<int, int, int, int, int>;
using Proc = Signal::Proc;

struct Receiver {
    explicit Receiver(const char* text) : name(text) {}
    void take(int, int, int, int, int) { s_calls += name; }
    const char* name;
    static inline std::string s_calls;
};

Proc of(Receiver& receiver) { return Proc(&Receiver::take, &receiver); }

TEST(Signal, CallsInTheOrderOfItsTable) {
    Signal signal(3);
    Receiver a("a");
    Receiver b("b");
    Receiver c("c");
    Receiver d("d");
    EXPECT_EQ(signal.attach(of(b), Signal::any), 1);
    EXPECT_EQ(signal.attach(of(a), Signal::front), 2);
    EXPECT_EQ(signal.attach(of(c), Signal::back), 3);
    EXPECT_EQ(signal.attach(of(d), Signal::any), -3);
    signal(1, 2, 3, 4, 5);
    EXPECT_EQ(Receiver::s_calls, "abc");
    EXPECT_EQ(signal.detach(of(b), true), 2);
    EXPECT_EQ(signal.attach(of(d), Signal::back), 3);
    signal(1, 2, 3, 4, 5);
    EXPECT_EQ(Receiver::s_calls, "abcacd");
}

TEST(Signal, RefusesWhatItCannotAttachOrFind) {
    Signal signal(2);
    Receiver a("a");
    EXPECT_EQ(signal.attach(Proc(), Signal::any), -4);
    EXPECT_EQ(signal.attach(Proc(&Receiver::take, &a, 0xFFFFFFFF), Signal::any), -5);
    EXPECT_EQ(signal.attach(of(a), static_cast<Signal::SlotPosition>(3)), -3);
    EXPECT_EQ(signal.detach(of(a), false), -1);
    EXPECT_EQ(signal.attach(Proc(&Receiver::take, &a, 16), Signal::any), 1);
    EXPECT_EQ(signal.attach(Proc(&Receiver::take, &a, 16), Signal::any), -2);
    EXPECT_EQ(signal.attach(Proc(&Receiver::take, &a, 17), Signal::any), 2);
    EXPECT_FALSE(signal.isAttached(of(a)));
    EXPECT_EQ(signal.detach(Proc(&Receiver::take, &a, 0xFFFFFFFF), true), 0);
    EXPECT_EQ(signal.detach(Proc(), false), -4);
    Signal none(0);
    EXPECT_EQ(none.attach(of(a), Signal::any), -3);
    EXPECT_EQ(none.detach(of(a), false), -1);
    none(1, 2, 3, 4, 5);
}

// Stays inside its call until it is let go.
struct Blocker {
    void take(int, int, int, int, int) {
        inside = true;
        while (!released)
            std::this_thread::yield();
        left = true;
    }
    std::atomic<bool> inside{false};
    std::atomic<bool> released{false};
    std::atomic<bool> left{false};
};

TEST(Signal, AWaitingDetachReturnsAfterTheCallAndAFreedSlotIsNotTakenBefore) {
    Signal signal(1);
    Blocker blocker;
    Receiver other("x");
    const Proc proc(&Blocker::take, &blocker);
    signal.attach(proc, Signal::any);
    std::thread emitter([&] { signal(1, 2, 3, 4, 5); });
    Support::await([&] { return blocker.inside.load(); });
    EXPECT_EQ(signal.detach(proc, false), 0);
    EXPECT_EQ(signal.attach(of(other), Signal::any), -3);
    blocker.released = true;
    emitter.join();
    EXPECT_EQ(signal.attach(proc, Signal::any), 1);

    blocker.released = blocker.inside = blocker.left = false;
    std::thread second([&] { signal(1, 2, 3, 4, 5); });
    Support::await([&] { return blocker.inside.load(); });
    std::thread waiter([&] {
        EXPECT_EQ(signal.detach(proc, true), 0);
        EXPECT_TRUE(blocker.left);
    });
    CThread::sleep(30);
    blocker.released = true;
    waiter.join();
    second.join();
}

struct SelfDetacher {
    void take(int, int, int, int, int) { result = signal->detach(Proc(&SelfDetacher::take, this), true); }
    Signal* signal;
    int result;
};

TEST(Signal, AProcedureMayDetachItselfAndManyThreadsMayUseIt) {
    Signal signal(8);
    SelfDetacher self{&signal, -9};
    signal.attach(Proc(&SelfDetacher::take, &self), Signal::any);
    signal(1, 2, 3, 4, 5);
    EXPECT_EQ(self.result, 0);

    struct Counter {
        void take(int, int, int, int, int) { ++calls; }
        std::atomic<int> calls{0};
    } counters[4];
    std::vector<std::thread> threads;
    for (Counter& counter : counters) {
        threads.emplace_back([&signal, &counter] {
            for (int i = 0; i < 300; ++i) {
                EXPECT_GT(signal.attach(Proc(&Counter::take, &counter), Signal::any), 0);
                signal(1, 2, 3, 4, 5);
                EXPECT_GE(signal.detach(Proc(&Counter::take, &counter), false), 0);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (Counter& counter : counters)
        EXPECT_GE(counter.calls, 300);
}

}  // namespace

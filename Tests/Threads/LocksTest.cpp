#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/ReadWriteMutex.h"
#include "Fundo/Fundo3/RecursiveMutex.h"
#include "Fundo/Fundo3/ThreadSpecific.h"
#include "Support/Output.h"

using namespace Tovra::Fundo;
using Support::contains;
using Support::Output;

namespace {

// Log lines reach standard output, and a death test looks at standard error.
void joinOutputs() {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    setvbuf(stdout, nullptr, _IONBF, 0);
}

TEST(Mutex, IsHeldByOneAndNotReentered) {
    CMutex mutex;
    ASSERT_TRUE(mutex.enter());
    EXPECT_FALSE(mutex.tryEnter());
    EXPECT_TRUE(mutex.leave());
    EXPECT_TRUE(mutex.tryEnter());
    EXPECT_TRUE(mutex.leave());
}

TEST(RecursiveMutex, IsFreeAfterAsManyLeaves) {
    CRecursiveMutex mutex;
    mutex.enter();
    mutex.enter();
    int order = 0;
    std::thread other([&] {
        mutex.enter();
        EXPECT_EQ(order, 1);
        mutex.leave();
    });
    EXPECT_TRUE(mutex.leave());
    order = 1;
    EXPECT_TRUE(mutex.leave());
    other.join();
#ifndef __SANITIZE_THREAD__  // which reports the misuse
    EXPECT_FALSE(mutex.leave());
#endif
}

TEST(ReadWriteMutex, AdmitsReadersTogetherAndRefusesItsWriterASecondTime) {
    Output output(3);
    CReadWriteMutex mutex(static_cast<CReadWriteMutex::RWPriority>(2));
    EXPECT_TRUE(mutex.enterReading());
    std::thread([&] {
        EXPECT_TRUE(mutex.enterReading());
        EXPECT_TRUE(mutex.leave());
    }).join();
    EXPECT_TRUE(mutex.leave());

    EXPECT_TRUE(mutex.enterWriting());
    EXPECT_FALSE(mutex.enterReading());
    EXPECT_FALSE(mutex.enterWriting());
    EXPECT_TRUE(mutex.leave());
    const std::string text = output.take();
    EXPECT_TRUE(contains(text, "Input rwpriority level error, priorityDefault used!"));
    EXPECT_TRUE(contains(text, "pthread_rwlock_wrlock called failed for :Resource deadlock avoided"));
    EXPECT_FALSE(contains(text, "rdlock"));
}

TEST(LocksDeathTest, ABrokenLockSaysWhyBeforeItEndsTheProcess) {
    EXPECT_DEATH(
        {
            joinOutputs();
            CMutex mutex;
            mutex.enter();
        },
        "CMutex::~CMutex\\(\\) errno:EBUSY\\.[^*]*\\*\\*\\*\\*\\* Internal Program Error - assertion "
        "\\(ret == 0\\) failed in Tovra::Fundo::CMutex::~CMutex\\(\\): Src/Fundo3/Mutex\\(");
    EXPECT_DEATH(CRecursiveMutex().enter(),
                 "failed in Tovra::Fundo::CRecursiveMutex::~CRecursiveMutex\\(\\): "
                 "Src/Fundo3/RecursiveMutex\\(");
    EXPECT_DEATH((joinOutputs(), CReadWriteMutex(CReadWriteMutex::priorityWrite)),
                 "current OS\\(android/mac\\)  doesn't support to configure write priority of RWmutex[^*]*"
                 "\\*\\*\\*\\*\\* Internal Program Error - assertion \\(ret == 0\\) failed in "
                 "Tovra::Fundo::RWMutexInternal::RWMutexInternal\\(CReadWriteMutex::RWPriority\\): ");
}

TEST(ThreadSpecific, HoldsAValueForEachThreadWhileThereAreKeys) {
    std::vector<std::unique_ptr<CThreadSpecific>> slots;
    do {
        slots.push_back(std::make_unique<CThreadSpecific>());
    } while (slots.back()->valid() && slots.size() < 100000);
    void* value = &slots;
    EXPECT_FALSE(slots.back()->valid());
    EXPECT_FALSE(slots.back()->setValue(&value));
    EXPECT_FALSE(slots.back()->getValue(&value));
    EXPECT_EQ(value, &slots) << "left alone";

    CThreadSpecific& slot = *slots.front();
    ASSERT_TRUE(slot.valid());
    EXPECT_TRUE(slot.setValue(&slots));
    std::thread([&] {
        EXPECT_TRUE(slot.getValue(&value));
        EXPECT_EQ(value, nullptr);
    }).join();
    EXPECT_TRUE(slot.getValue(&value));
    EXPECT_EQ(value, &slots);
}

}  // namespace

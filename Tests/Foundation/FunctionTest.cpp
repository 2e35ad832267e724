#include "Fundo/Fundo3/Function.h"

#include <gtest/gtest.h>

#include <thread>

using namespace Tovra::Fundo;

namespace {

int twice(int value) { return 2 * value; }
int thrice(int value) { return 3 * value; }

struct Left {
    virtual ~Left() = default;
    virtual int which(int value) { return value + 1; }
    int padding = 0;
};

struct Right {
    virtual ~Right() = default;
    virtual int other(int value) { return value + base; }
    int constant(int value) const { return value - base; }
    int base = 10;
};

struct Both : Left, Right {
    int which(int value) override { return value + 100; }
    int marker(int) { return static_cast<int>(getCurrentFunctionReuse()); }
};

using Delegate = TFunction1<int, int>;

TEST(Delegate, CallsWhatItIsBoundTo) {
    Both both;
    const Both& fixed = both;
    EXPECT_EQ(Delegate(twice)(4), 8);
    EXPECT_EQ(Delegate(&Left::which, &both)(1), 101);
    // The second base lies at another address than the object.
    EXPECT_EQ(Delegate(&Right::other, &both)(1), 11);
    EXPECT_EQ(Delegate(&Right::constant, &fixed)(1), -9);
    EXPECT_EQ(Delegate(&Right::constant, &both)(1), -9);
}

TEST(Delegate, KnowsItsKind) {
    Both both;
    EXPECT_TRUE(Delegate().empty());
    EXPECT_TRUE(Delegate(static_cast<int (*)(int)>(nullptr)).empty());
    EXPECT_EQ(Delegate(&Left::which, &both).type(), 1U);
    EXPECT_EQ(Delegate(twice).type(), 2U);
    EXPECT_EQ(Delegate(&Both::marker, &both, 16).type(), 16U);
    EXPECT_DEATH(Delegate(&Both::marker, &both, 15), "assertion \\(reuse >= 16\\) failed");
}

TEST(Delegate, ComparesByFunctionObjectAndMarker) {
    Both one;
    Both two;
    EXPECT_EQ(Delegate(), Delegate());
    EXPECT_NE(Delegate(), Delegate(twice));
    EXPECT_EQ(Delegate(twice), Delegate(twice));
    EXPECT_NE(Delegate(twice), Delegate(thrice));
    EXPECT_NE(Delegate(&Both::marker, &one), Delegate(&Both::marker, &two));
    EXPECT_NE(Delegate(&Both::marker, &one), Delegate(twice));
    EXPECT_NE(Delegate(&Left::which, &one), Delegate(&Both::marker, &one));
    EXPECT_EQ(Delegate(&Both::marker, &one, 16), Delegate(&Both::marker, &one, 0xFFFFFFFF));
    EXPECT_EQ(Delegate(&Both::marker, &one, 16), Delegate(&Both::marker, &one, 16));
    EXPECT_NE(Delegate(&Both::marker, &one, 16), Delegate(&Both::marker, &one, 17));
    EXPECT_NE(Delegate(&Both::marker, &one, 16), Delegate(&Both::marker, &one));
    EXPECT_NE(Delegate(&Both::marker, &one, 16), Delegate(&Both::marker, &two, 0xFFFFFFFF));
}

TEST(Delegate, LeavesItsMarkerInTheCallingThread) {
    Both both;
    EXPECT_EQ(getCurrentFunctionReuse(), 0U);
    EXPECT_EQ(Delegate(&Both::marker, &both, 20)(0), 20);
    EXPECT_EQ(Delegate(&Both::marker, &both)(0), 20);
    EXPECT_EQ(Delegate(&Both::marker, &both, 0xFFFFFFFF)(0), 20);
    std::thread([] { EXPECT_EQ(getCurrentFunctionReuse(), 0U); }).join();
}

}  // namespace

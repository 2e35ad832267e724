#include "Fundo/Fundo3/Error.h"

#include <gtest/gtest.h>

#include <climits>
#include <thread>

using namespace Tovra::Fundo;

namespace {

TEST(LastError, BelongsToTheThreadThatSetIt) {
    EXPECT_EQ(getLastError(), 0);
    setLastError(INT_MIN);
    std::thread([] {
        EXPECT_EQ(getLastError(), 0);
        setLastError(5);
    }).join();
    EXPECT_EQ(getLastError(), INT_MIN);
}

TEST(ErrorMessages, AreReplacedByNumberAndNeverNull) {
    EXPECT_STREQ(getErrMsg(77), "");
    EXPECT_EQ(getErrorMessage(77), "");
    EXPECT_TRUE(setErrMsg(-77, "negative"));
    EXPECT_TRUE(setErrorMessage(-77, "replaced"));
    EXPECT_STREQ(getErrMsg(-77), "replaced");
    EXPECT_TRUE(setErrMsg(-77, nullptr));
    EXPECT_EQ(getErrorMessage(-77), "");
}

TEST(AssertionDeathTest, SaysWhatFailedAndWhere) {
    EXPECT_EXIT(Detail::assertionFailed("a == b", "void f()", "Src/File", 12),
                testing::KilledBySignal(SIGABRT),
                "\\*\\*\\*\\*\\* Internal Program Error - assertion \\(a == b\\) failed in void f\\(\\): "
                "Src/File\\(12\\)\n");
    EXPECT_EXIT(Detail::assertionFailedMsg("a == b", "because", "void f()", "Src/File", 12),
                testing::KilledBySignal(SIGABRT), "failed in void f\\(\\): Src/File\\(12\\): because\n");
}

}  // namespace

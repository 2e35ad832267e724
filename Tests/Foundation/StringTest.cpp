// The string's assertions must not depend on this.
#ifndef NDEBUG
#define NDEBUG
#endif
#include "Fundo/Fundo3/String.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <unordered_set>

using Tovra::Fundo::CString;

namespace {

int mode(const CString& text) { return reinterpret_cast<const char*>(&text)[31]; }

void expectSame(const CString& ours, const std::string& model) {
    ASSERT_EQ(ours.size(), model.size());
    ASSERT_STREQ(ours.c_str(), model.c_str());
    ASSERT_GE(ours.capacity(), ours.size());
    const bool large = mode(ours) == 32;
    ASSERT_TRUE(large || ours.capacity() == 31);
    if (!large) {
        ASSERT_EQ(mode(ours), 31 - static_cast<int>(ours.size()));
    }
    const CString copy(ours);
    ASSERT_EQ(copy, ours);
    ASSERT_TRUE(mode(copy) != 32 || copy.capacity() == copy.size());
}

TEST(String, DoesWhatTheStandardStringDoes) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&](size_t limit) { return limit == 0 ? 0 : random() % limit; };
    CString ours;
    std::string model;
    CString other = "other";
    std::string otherModel = "other";
    for (int step = 0; step < 20000; ++step) {
        const std::string text(below(40), static_cast<char>('a' + below(26)));
        const size_t pos = below(model.size() + 1);
        const size_t count = below(model.size() + 1);
        switch (below(12)) {
            case 0:
                ours.append(text.c_str(), text.size()), model.append(text);
                break;
            case 1:
                ours.assign(text.c_str(), text.size()), model.assign(text);
                break;
            case 2:
                ours.erase(pos, count), model.erase(pos, count);
                break;
            case 3:
                ours.resize(count, 'r'), model.resize(count, 'r');
                break;
            case 4:
                ours.resize(below(70), 's'), model.resize(ours.size(), 's');
                break;
            case 5:
                ours.reserve(below(70));
                break;
            case 6:
                ours.insert(pos, text), model.insert(pos, text);
                break;
            case 7:
                ours.replace(pos, count, text), model.replace(pos, count, text);
                break;
            case 8:
                ours.swap(other), model.swap(otherModel);
                break;
            case 9:
                ours = other, model = otherModel;
                break;
            case 10: {  // a part of itself
                const size_t length = below(model.size() - pos + 1);
                ours.append(ours.begin() + pos, length), model.append(model.substr(pos, length));
                break;
            }
            default:
                ours.replace(pos, count, ours.begin(), ours.size() / 2);
                model.replace(pos, count, std::string(model, 0, model.size() / 2));
        }
        if (model.size() > 300) ours.clear(), model.clear();
        expectSame(ours, model);
        expectSame(other, otherModel);
        if (HasFatalFailure()) FAIL() << "step " << step;
        ASSERT_EQ(ours.find("aa"), model.find("aa"));
        ASSERT_EQ(ours.compare(otherModel) < 0, model.compare(otherModel) < 0);
    }
}

TEST(String, GrowsExactlyAndComesBackByShrinking) {
    CString text(std::string(31, 'x').c_str());
    EXPECT_EQ(mode(text), 0);
    text.reserve(31);
    EXPECT_EQ(text.capacity(), 31U);
    text += 'y';
    EXPECT_EQ(mode(text), 32);
    EXPECT_EQ(text.capacity(), 32U);
    text += 'z';
    EXPECT_EQ(text.capacity(), 33U);
    text.resize(31);
    EXPECT_EQ(mode(text), 0);
    text.resize(3);
    text.reserve(32);
    EXPECT_EQ(mode(text), 32);
    text.erase(3, 1);
    EXPECT_STREQ(CString(text).c_str(), "xxx");
    text.resize(5, 'q');
    EXPECT_STREQ(text.c_str(), "xxxqq");
    CString moved(std::move(text));
    EXPECT_STREQ(moved.c_str(), "xxxqq");
    EXPECT_TRUE(text.empty());
    EXPECT_THROW(moved.erase(6, 1), std::out_of_range);
    EXPECT_NO_THROW(moved.erase(5, 1));
    EXPECT_THROW(moved.at(5), std::out_of_range);
    EXPECT_THROW(CString().at(0), std::out_of_range);
}

TEST(String, StandsInHashedContainersAndExpressions) {
    const std::unordered_set<CString> names = {"a", CString("b"), CString(std::string(40, 'c'))};
    EXPECT_EQ(names.count(std::string(40, 'c')), 1U);
    const CString sum = CString("left") + "-" + CString("right");
    EXPECT_EQ(sum, "left-right");
    EXPECT_EQ(sum.substr(5), "right");
    EXPECT_LT(CString("a"), CString("b"));
    EXPECT_NE(CString("a"), "b");
    EXPECT_EQ((CString("x", 0) += std::string_view()).assign("x", 0).erase(0, 0) + std::string("y"), "y");
}

TEST(StringDeathTest, AssertsInReleaseBuildsToo) {
    CString text = "abc";
    EXPECT_DEATH(text.insert(4, "x"),
                 "./Include/Fundo/Fundo3/Detail/flex_string_shell:[0-9]+: .*Assertion "
                 "`pos <= size\\(\\)' failed");
    reinterpret_cast<char*>(&text)[31] = 33;
    EXPECT_DEATH(text.size(),
                 "./Include/Fundo/Fundo3/Detail/smallstringopt:[0-9]+: .*Assertion "
                 "`!Small\\(\\) \\|\\| maxSmallString >= buf_\\[maxSmallString\\]' failed");
}

}  // namespace

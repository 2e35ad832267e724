#include "Utils/IntervalSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <utility>
#include <vector>

#include "Support/Random.h"

using Tovra::Utils::CIntervalSet;

namespace {

using Interval = CIntervalSet::Interval;
using Intervals = std::vector<Interval>;

CIntervalSet make(const Intervals& intervals) {
    CIntervalSet set;
    for (const Interval& interval : intervals)
        set.insert(interval);
    return set;
}

Intervals listed(const CIntervalSet& set) { return Intervals(set.begin(), set.end()); }

Intervals inserted(CIntervalSet set, const Interval& interval) {
    set.insert(interval);
    return listed(set);
}

Intervals erased(CIntervalSet set, const Interval& interval) {
    set.erase(interval);
    return listed(set);
}

TEST(IntervalSet, InsertMergesWhatOverlapsOrTouches) {
    const CIntervalSet one = make({{10, 20}}), two = make({{10, 20}, {30, 40}});
    EXPECT_EQ(inserted({}, {5, 5}), Intervals());
    EXPECT_EQ(inserted({}, {7, 3}), Intervals());
    EXPECT_EQ(inserted(one, {20, 30}), (Intervals{{10, 30}}));
    EXPECT_EQ(inserted(one, {0, 10}), (Intervals{{0, 20}}));
    EXPECT_EQ(inserted(one, {5, 25}), (Intervals{{5, 25}}));
    EXPECT_EQ(inserted(one, {12, 18}), listed(one));
    EXPECT_EQ(inserted(two, {20, 30}), (Intervals{{10, 40}}));
    EXPECT_EQ(inserted(two, {15, 35}), (Intervals{{10, 40}}));
    EXPECT_EQ(inserted(two, {22, 28}), (Intervals{{10, 20}, {22, 28}, {30, 40}}));
    EXPECT_EQ(inserted(two, {INT_MIN, INT_MAX}), (Intervals{{INT_MIN, INT_MAX}}));
}

TEST(IntervalSet, EraseCutsAndSplits) {
    const CIntervalSet one = make({{10, 20}});
    EXPECT_EQ(erased({}, {0, 9}), Intervals());
    EXPECT_EQ(erased(one, {12, 18}), (Intervals{{10, 12}, {18, 20}}));
    EXPECT_EQ(erased(one, {10, 15}), (Intervals{{15, 20}}));
    EXPECT_EQ(erased(one, {15, 20}), (Intervals{{10, 15}}));
    EXPECT_EQ(erased(one, {5, 25}), Intervals());
    EXPECT_EQ(erased(one, {20, 30}), listed(one));
    EXPECT_EQ(erased(one, {0, 10}), listed(one));
    EXPECT_EQ(erased(one, {18, 12}), listed(one));
}

TEST(IntervalSet, FindGivesTheFirstIntervalThatEndsAtOrAbove) {
    const CIntervalSet set = make({{10, 20}, {30, 40}});
    for (const auto& [value, index] : Intervals{{5, 0}, {15, 0}, {20, 0}, {25, 1}, {40, 1}, {41, -1}})
        EXPECT_EQ(set.find(value), index) << value;
    EXPECT_EQ(CIntervalSet().find(0), -1);
    EXPECT_EQ(set.begin()->second, 20);
}

TEST(IntervalSet, ANumberOutsideFailsItsAssertion) {
    const CIntervalSet set = make({{10, 20}, {30, 40}});
    EXPECT_EQ(set.get(1), Interval(30, 40));
    for (const int index : {2, -1, INT_MIN, INT_MAX})
        EXPECT_DEATH(set.get(index), "size_t\\(index \\* 2 \\+ 1\\) < m_internal->keys.size\\(\\)") << index;
}

// What the set must be, integer by integer.
class CModel {
public:
    static constexpr int kLowest = -3000, kSize = 6000;

    void set(const Interval& interval, bool present) {
        for (int value = interval.first; value < interval.second; ++value)
            m_bits[static_cast<size_t>(value - kLowest)] = present;
    }
    void unite(const CModel& other) {
        for (size_t i = 0; i < m_bits.size(); ++i)
            m_bits[i] = m_bits[i] || other.m_bits[i];
    }
    bool contains(int value) const { return m_bits[static_cast<size_t>(value - kLowest)]; }
    // Maximal runs: disjoint, ascending, never touching.
    Intervals intervals() const {
        Intervals runs;
        for (int value = kLowest; value < kLowest + kSize; ++value) {
            if (!contains(value)) continue;
            if (runs.empty() || runs.back().second != value) runs.emplace_back(value, value);
            runs.back().second = value + 1;
        }
        return runs;
    }

private:
    std::vector<bool> m_bits = std::vector<bool>(kSize);
};

int expectedFind(const Intervals& intervals, int value) {
    for (size_t i = 0; i < intervals.size(); ++i)
        if (intervals[i].second >= value) return static_cast<int>(i);
    return -1;
}

Interval randomInterval(Support::Random& random, unsigned longest) {
    const int start = CModel::kLowest + static_cast<int>(random() % CModel::kSize);
    return {start, std::min(start + static_cast<int>(random() % longest), CModel::kLowest + CModel::kSize)};
}

void expectEqual(const CIntervalSet& set, const CModel& model, Support::Random& random) {
    const Intervals expected = model.intervals();
    ASSERT_EQ(listed(set), expected);
    ASSERT_EQ(set.count(), static_cast<int>(expected.size()));
    ASSERT_EQ(set.empty(), expected.empty());
    for (int i = 0; i < 10; ++i) {
        const int value = randomInterval(random, 1).first;
        ASSERT_EQ(set.contains(value), model.contains(value)) << value;
        ASSERT_EQ(set.find(value), expectedFind(expected, value)) << value;
        if (expected.empty()) continue;
        const size_t index = random() % expected.size();
        ASSERT_EQ(set.get(static_cast<int>(index)), expected[index]);
        ASSERT_TRUE(set.contains(expected[index].first));
        ASSERT_FALSE(set.contains(expected[index].second));
    }
}

void changeBoth(CIntervalSet& set, CModel& model, const Interval& interval, bool present) {
    present ? set.insert(interval) : set.erase(interval);
    model.set(interval, present);
}

// From as many intervals as the range of the model can hold, by short ranges and by some that remove hundreds
// of intervals at once.
TEST(IntervalSet, RandomOperationsKeepItEqualToABitmap) {
    Support::Random random;
    for (int round = 0; round < 20; ++round) {
        CIntervalSet set;
        CModel model;
        for (int value = CModel::kLowest; value < CModel::kLowest + CModel::kSize; value += 2)
            changeBoth(set, model, {value, value + 1}, true);
        for (int step = 0; step < 500; ++step) {
            const unsigned longest = random() % 50 == 0 ? 2000 : 4;
            changeBoth(set, model, randomInterval(random, longest), random() % 2 == 0);
            ASSERT_NO_FATAL_FAILURE(expectEqual(set, model, random)) << "step " << step;
        }
    }
}

TEST(IntervalSet, UnionIsThatOfTheIntegers) {
    CIntervalSet touching = make({{0, 5}});
    touching += make({{5, 9}});
    EXPECT_EQ(listed(touching), (Intervals{{0, 9}}));
    Support::Random random;
    for (int round = 0; round < 50; ++round) {
        CIntervalSet sets[2];
        CModel models[2];
        for (size_t side = 0; side < 2; ++side) {
            for (auto i = random() % 1500; i > 0; --i)
                changeBoth(sets[side], models[side], randomInterval(random, 6), true);
        }
        models[0].unite(models[1]);
        sets[0] += sets[1];
        ASSERT_NO_FATAL_FAILURE(expectEqual(sets[0], models[0], random));
        sets[0] += sets[0];
        ASSERT_NO_FATAL_FAILURE(expectEqual(sets[0], models[0], random));
        // What a union made can be changed further.
        changeBoth(sets[0], models[0], {-100, 100}, false);
        ASSERT_NO_FATAL_FAILURE(expectEqual(sets[0], models[0], random));
    }
}

TEST(IntervalSet, CopiesAreDeepAndSwapExchanges) {
    CIntervalSet first = make({{1, 2}});
    CIntervalSet copy(first);
    copy.insert({5, 6});
    EXPECT_NE(first, copy);
    CIntervalSet assigned = make({{7, 8}});
    assigned = copy;
    EXPECT_EQ(assigned, copy);
    assigned.clear();
    EXPECT_EQ(copy.count(), 2);
    first.swap(assigned);
    EXPECT_TRUE(first.empty());
    EXPECT_EQ(listed(assigned), (Intervals{{1, 2}}));
    EXPECT_EQ(make({{1, 3}, {2, 5}}), make({{1, 5}}));
}

}  // namespace

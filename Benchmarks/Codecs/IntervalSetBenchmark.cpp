// A million random inserts and erases over a hundred thousand live intervals.

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#ifdef HAVE_BOOST
#include <boost/icl/interval_set.hpp>
#endif

#include "Utils/IntervalSet.h"

using Tovra::Utils::CIntervalSet;

namespace {

constexpr int kIntervals = 100000, kOperations = 1000000, kSpacing = 20;

// Short ranges, so that about as many intervals are made as vanish.
const std::vector<CIntervalSet::Interval>& operations() {
    static const auto s_operations = [] {
        std::mt19937 random(20);
        std::vector<CIntervalSet::Interval> ranges;
        for (int i = 0; i < kOperations; ++i) {
            const int start = static_cast<int>(random() % (kIntervals * kSpacing));
            ranges.emplace_back(start, start + 1 + static_cast<int>(random() % (kSpacing / 2)));
        }
        return ranges;
    }();
    return s_operations;
}

void ours(benchmark::State& state) {
    for (auto _ : state) {
        CIntervalSet set;
        for (int i = 0; i < kIntervals; ++i)
            set.insert({i * kSpacing, i * kSpacing + kSpacing / 2});
        bool insert = true;
        for (const auto& range : operations()) {
            if (insert) {
                set.insert(range);
            } else {
                set.erase(range);
            }
            insert = !insert;
        }
        benchmark::DoNotOptimize(set.count());
    }
}
BENCHMARK(ours)->Name("Fundo/intervals/random")->Unit(benchmark::kMillisecond);

#ifdef HAVE_BOOST
void boostIcl(benchmark::State& state) {
    using Interval = boost::icl::interval<int>;
    for (auto _ : state) {
        boost::icl::interval_set<int> set;
        for (int i = 0; i < kIntervals; ++i)
            set.insert(Interval::right_open(i * kSpacing, i * kSpacing + kSpacing / 2));
        bool insert = true;
        for (const auto& range : operations()) {
            const auto interval = Interval::right_open(range.first, range.second);
            if (insert) {
                set.insert(interval);
            } else {
                set.erase(interval);
            }
            insert = !insert;
        }
        benchmark::DoNotOptimize(set.iterative_size());
    }
}
BENCHMARK(boostIcl)->Name("BoostIcl/intervals/random")->Unit(benchmark::kMillisecond);
#endif

}  // namespace

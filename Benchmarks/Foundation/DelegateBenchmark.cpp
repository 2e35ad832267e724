#include <benchmark/benchmark.h>

#include <functional>

#include "Fundo/Fundo3/Function.h"

using Tovra::Fundo::TFunction1;

namespace {

__attribute__((noinline)) int twice(int value) { return 2 * value; }

}  // namespace

// With external linkage: the compiler must not know all classes and call the override directly.
namespace DelegateBenchmark {

struct Base {
    virtual ~Base() = default;
    __attribute__((noinline)) int member(int value) { return value + offset; }
    virtual int dynamic(int value) { return value - offset; }
    int offset = 3;
};

struct Derived : Base {
    __attribute__((noinline)) int dynamic(int value) override { return value * offset; }
};

}  // namespace DelegateBenchmark

namespace {

using DelegateBenchmark::Base;
using DelegateBenchmark::Derived;

Derived s_object;
Base* s_base = &s_object;

using Ours = TFunction1<int, int>;
using Theirs = std::function<int(int)>;

Ours freeOurs() { return Ours(twice); }
Theirs freeTheirs() { return Theirs(twice); }
Ours memberOurs() { return Ours(&Base::member, s_base); }
Theirs memberTheirs() {
    return [](int value) { return s_base->member(value); };
}
Ours virtualOurs() { return Ours(&Base::dynamic, s_base); }
Theirs virtualTheirs() {
    return [](int value) { return s_base->dynamic(value); };
}

template <typename Delegate>
void call(benchmark::State& state, Delegate (*make)()) {
    Delegate delegate = make();
    benchmark::DoNotOptimize(delegate);
    int value = 1;
    for (auto _ : state) {
        value = delegate(value) & 0xFF;
        benchmark::DoNotOptimize(value);
    }
}

template <typename Delegate>
void copy(benchmark::State& state, Delegate (*make)()) {
    const Delegate delegate = make();
    for (auto _ : state) {
        Delegate other(delegate);
        benchmark::DoNotOptimize(other);
    }
}

BENCHMARK_CAPTURE(call, free, freeOurs)->Name("Fundo/Delegate/free");
BENCHMARK_CAPTURE(call, free, freeTheirs)->Name("Std/Delegate/free");
BENCHMARK_CAPTURE(call, member, memberOurs)->Name("Fundo/Delegate/member");
BENCHMARK_CAPTURE(call, member, memberTheirs)->Name("Std/Delegate/member");
BENCHMARK_CAPTURE(call, virtual, virtualOurs)->Name("Fundo/Delegate/virtual");
BENCHMARK_CAPTURE(call, virtual, virtualTheirs)->Name("Std/Delegate/virtual");
BENCHMARK_CAPTURE(copy, copy, memberOurs)->Name("Fundo/Delegate/copy");
BENCHMARK_CAPTURE(copy, copy, memberTheirs)->Name("Std/Delegate/copy");

}  // namespace

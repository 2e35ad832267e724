#include <benchmark/benchmark.h>

#include <string>

#include "Fundo/Fundo3/String.h"

namespace {

// Construct from characters, copy, destroy both.
template <typename String>
void lifetime(benchmark::State& state) {
    const std::string text(static_cast<size_t>(state.range(0)), 'x');
    const char* characters = text.c_str();
    for (auto _ : state) {
        benchmark::DoNotOptimize(characters);
        String made(characters);
        benchmark::DoNotOptimize(made);
        String copy(made);
        benchmark::DoNotOptimize(copy);
    }
}

BENCHMARK_TEMPLATE(lifetime, Tovra::Fundo::CString)->Name("Fundo/String/lifetime")->Arg(8)->Arg(31)->Arg(64);
BENCHMARK_TEMPLATE(lifetime, std::string)->Name("Std/String/lifetime")->Arg(8)->Arg(31)->Arg(64);

}  // namespace

#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "Utils/CpuFeatures.h"

namespace Bench {

constexpr std::size_t kLarge = 64 * 1024;

inline std::vector<std::uint8_t> sample(std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    std::uint32_t state = 1;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

// Times work(bytes, size) with only some instructions allowed to the library.
template <class Work>
void add(const char* name, Work work, std::size_t size = kLarge,
         unsigned features = Tovra::Utils::Cpu::kAll) {
    benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
        if (features != Tovra::Utils::Cpu::kAll && !Tovra::Utils::Cpu::has(features)) {
            state.SkipWithError("not on this processor");
            return;
        }
        const Tovra::Utils::Cpu::CRestriction path(features);
        std::vector<std::uint8_t> bytes = sample(size);
        for (auto _ : state) {
            work(bytes.data(), bytes.size());
            benchmark::ClobberMemory();
        }
        state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                                static_cast<std::int64_t>(size));
    });
}

}  // namespace Bench

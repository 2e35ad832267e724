// Dates and clocks beside the C library and libfmt. Inputs change from call to call, so that no branch is
// learned by heart.
#include <benchmark/benchmark.h>
#include <sys/time.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <random>

#ifdef HAVE_FMT
#include <fmt/format.h>
#endif

#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Utc.h"

namespace {

using namespace Tovra::Fundo;

constexpr size_t kInputs = 1024;

template <typename T>
class Inputs {
public:
    template <typename Make>
    explicit Inputs(Make make) {
        std::mt19937 random(1);
        std::uniform_int_distribution<time_t> seconds(0, 2145916799);
        for (T& value : m_values)
            value = make(seconds(random));
    }
    const T& next() { return m_values[m_next++ % kInputs]; }

private:
    std::array<T, kInputs> m_values{};
    size_t m_next = 0;
};

tm toTm(time_t seconds) {
    tm time{};
    gmtime_r(&seconds, &time);
    return time;
}

CTime toTime(time_t seconds) { return {static_cast<unsigned long long>(seconds), false}; }

void breakDownFundo(benchmark::State& state) {
    Inputs<time_t> inputs([](time_t seconds) { return seconds; });
    SystemTime time{};
    for (auto _ : state) {
        seconds_to_time(static_cast<unsigned long long>(inputs.next()), time);
        benchmark::DoNotOptimize(time);
    }
}
BENCHMARK(breakDownFundo)->Name("Fundo/Time/seconds_to_time");

void breakDownLibc(benchmark::State& state) {
    Inputs<time_t> inputs([](time_t seconds) { return seconds; });
    tm time{};
    for (auto _ : state) {
        gmtime_r(&inputs.next(), &time);
        benchmark::DoNotOptimize(time);
    }
}
BENCHMARK(breakDownLibc)->Name("gmtime_r/Time/seconds_to_time");

void makeFundo(benchmark::State& state) {
    Inputs<CTime> inputs(toTime);
    for (auto _ : state)
        benchmark::DoNotOptimize(time_to_seconds(inputs.next()));
}
BENCHMARK(makeFundo)->Name("Fundo/Time/time_to_seconds");

void makeLibc(benchmark::State& state) {
    Inputs<tm> inputs(toTm);
    for (auto _ : state) {
        tm time = inputs.next();
        benchmark::DoNotOptimize(timegm(&time));
    }
}
BENCHMARK(makeLibc)->Name("timegm/Time/time_to_seconds");

void formatFundo(benchmark::State& state) {
    Inputs<CTime> inputs(toTime);
    char text[64];
    for (auto _ : state) {
        inputs.next().format(text, sizeof text, "yyyy-MM-dd HH:mm:ss", 0);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(formatFundo)->Name("Fundo/Time/format");

void formatLibc(benchmark::State& state) {
    Inputs<tm> inputs(toTm);
    char text[64];
    for (auto _ : state) {
        strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &inputs.next());
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(formatLibc)->Name("strftime/Time/format");

#ifdef HAVE_FMT
void formatFmt(benchmark::State& state) {
    Inputs<CTime> inputs(toTime);
    char text[64];
    for (auto _ : state) {
        const CTime& time = inputs.next();
        *fmt::format_to_n(text, sizeof text - 1, "{:04}-{:02}-{:02} {:02}:{:02}:{:02}", time.year, time.month,
                          time.day, time.hour, time.minute, time.second)
             .out = '\0';
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(formatFmt)->Name("fmt/Time/format");
#endif

std::array<char, 24> toText(time_t seconds) {
    std::array<char, 24> text{};
    toTime(seconds).format(text.data(), text.size(), "yyyy-MM-dd HH:mm:ss", 0);
    return text;
}

void parseFundo(benchmark::State& state) {
    Inputs<std::array<char, 24>> inputs(toText);
    CTime time;
    for (auto _ : state) {
        benchmark::DoNotOptimize(time.parse(inputs.next().data(), "yyyy-MM-dd HH:mm:ss", 0));
        benchmark::DoNotOptimize(time);
    }
}
BENCHMARK(parseFundo)->Name("Fundo/Time/parse");

void parseLibc(benchmark::State& state) {
    Inputs<std::array<char, 24>> inputs(toText);
    tm time{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(strptime(inputs.next().data(), "%Y-%m-%d %H:%M:%S", &time));
        benchmark::DoNotOptimize(time);
    }
}
BENCHMARK(parseLibc)->Name("strptime/Time/parse");

void monotonicFundo(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(CTime::getCurrentMilliSecond());
}
BENCHMARK(monotonicFundo)->Name("Fundo/Time/getCurrentMilliSecond");

void monotonicLibc(benchmark::State& state) {
    timespec now{};
    for (auto _ : state) {
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        benchmark::DoNotOptimize(now);
    }
}
BENCHMARK(monotonicLibc)->Name("clock_gettime/Time/getCurrentMilliSecond");

void currentFundo(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(CTime::getCurrentTime());
}
BENCHMARK(currentFundo)->Name("Fundo/Time/getCurrentTime");

void currentLibc(benchmark::State& state) {
    for (auto _ : state) {
        timeval now;
        gettimeofday(&now, nullptr);
        tm time;
        localtime_r(&now.tv_sec, &time);
        benchmark::DoNotOptimize(time);
    }
}
BENCHMARK(currentLibc)->Name("localtime_r/Time/getCurrentTime");

void printFundo(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(CTime::getCurTimeForPrint());
}
BENCHMARK(printFundo)->Name("Fundo/Time/getCurTimeForPrint");

void printLibc(benchmark::State& state) {
    const time_t now = ::time(nullptr);
    tm time;
    for (auto _ : state) {
        localtime_r(&now, &time);
        benchmark::DoNotOptimize(time);
    }
}
BENCHMARK(printLibc)->Name("localtime_r/Time/getCurTimeForPrint");

}  // namespace

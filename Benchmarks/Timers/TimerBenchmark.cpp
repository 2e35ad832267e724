#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <random>
#include <vector>

#include "Fundo/Fundo3/Thread.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Timer.h"

#ifdef HAVE_LIBUV
#include <uv.h>
#endif
#ifdef HAVE_BOOST
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#endif

using namespace Tovra::Fundo;

namespace {

constexpr int kArmed = 10;
constexpr unsigned kFar = 3600000;  // milliseconds

void nothing(unsigned long) {}
const TFunction1<void, unsigned long> kNothing(nothing);

void armAndCancel(benchmark::State& state) {
    std::vector<std::unique_ptr<CTimer>> armed;
    for (int i = 0; i < kArmed; ++i) {
        armed.push_back(std::make_unique<CTimer>("Armed"));
        armed.back()->start(kNothing, kFar + static_cast<unsigned>(i), 0, 0, 0);
    }
    CTimer timer("Bench");
    for (auto _ : state) {
        timer.start(kNothing, kFar + kArmed / 2, 0, 0, 0);
        timer.stop(false);
    }
}
BENCHMARK(armAndCancel)->Name("Fundo/Timer/arm_cancel");
BENCHMARK(armAndCancel)->Name("Fundo/Timer/arm_cancel_beside_unlocked");

#ifdef HAVE_LIBUV
struct NoMutex {
    void lock() {}
    void unlock() {}
};

// Its timers belong to the thread of their loop and take no lock. To be armed by any thread, as ours are,
// they need a mutex around each call.
template <class Mutex>
void libuvArmAndCancel(benchmark::State& state) {
    Mutex mutex;
    uv_loop_t loop;
    uv_loop_init(&loop);
    uv_timer_t timers[kArmed + 1];
    const auto ignore = [](uv_timer_t*) {};
    for (int i = 0; i <= kArmed; ++i)
        uv_timer_init(&loop, &timers[i]);
    for (int i = 0; i < kArmed; ++i)
        uv_timer_start(&timers[i], ignore, kFar + static_cast<unsigned>(i), 0);
    for (auto _ : state) {
        {
            const std::lock_guard<Mutex> lock(mutex);
            uv_timer_start(&timers[kArmed], ignore, kFar + kArmed / 2, 0);
        }
        const std::lock_guard<Mutex> lock(mutex);
        uv_timer_stop(&timers[kArmed]);
    }
    for (uv_timer_t& timer : timers)
        uv_close(reinterpret_cast<uv_handle_t*>(&timer), nullptr);
    uv_run(&loop, UV_RUN_DEFAULT);
    uv_loop_close(&loop);
}
BENCHMARK_TEMPLATE(libuvArmAndCancel, std::mutex)->Name("Libuv/Timer/arm_cancel");
BENCHMARK_TEMPLATE(libuvArmAndCancel, NoMutex)->Name("Libuv/Timer/arm_cancel_beside_unlocked");
#endif

#ifdef HAVE_BOOST
// Timers that any thread may arm, as ours.
void asioArmAndCancel(benchmark::State& state) {
    boost::asio::io_context context;
    std::vector<boost::asio::steady_timer> timers;
    for (int i = 0; i <= kArmed; ++i)
        timers.emplace_back(context);
    const auto arm = [](boost::asio::steady_timer& timer, unsigned milliseconds) {
        timer.expires_after(std::chrono::milliseconds(milliseconds));
        timer.async_wait([](const boost::system::error_code&) {});
    };
    for (unsigned i = 0; i < kArmed; ++i)
        arm(timers[i], kFar + i);
    for (auto _ : state) {
        arm(timers[kArmed], kFar + kArmed / 2);
        timers[kArmed].cancel();
        context.poll();
    }
}
BENCHMARK(asioArmAndCancel)->Name("Asio/Timer/arm_cancel");
#endif

// How late a thousand one-shot timers over two seconds are called; the time of the case itself means nothing.
void lateness(benchmark::State& state) {
    struct Collector {
        void fire(unsigned long due) {
            const auto now = static_cast<long>(CTime::getCurrentMicroSecond());
            const std::lock_guard<std::mutex> lock(mutex);
            late.push_back(static_cast<double>(now - static_cast<long>(due)) / 1000);
        }
        std::mutex mutex;
        std::vector<double> late;
    } collector;
    std::mt19937 random(1);
    for (auto _ : state) {
        std::vector<std::unique_ptr<CTimer>> timers;
        for (int i = 0; i < 1000; ++i) {
            timers.push_back(std::make_unique<CTimer>("Late"));
            const unsigned delay = 1 + static_cast<unsigned>(random() % 2000);
            const unsigned long due = CTime::getCurrentMicroSecond() + delay * 1000UL;
            timers.back()->start({&Collector::fire, &collector}, delay, 0, due, 0);
        }
        CThread::sleep(2100);
    }
    std::sort(collector.late.begin(), collector.late.end());
    state.counters["fired"] = static_cast<double>(collector.late.size());
    state.counters["min_ms"] = collector.late.front();
    state.counters["p50_ms"] = collector.late[collector.late.size() / 2];
    state.counters["p99_ms"] = collector.late[collector.late.size() * 99 / 100];
}
BENCHMARK(lateness)->Name("Fundo/Timer/lateness")->Iterations(1)->Unit(benchmark::kMillisecond);

// What a manager without armed timers costs: processor time of the process over two seconds of sleep.
void idle(benchmark::State& state) {
    const CTimer timer("Idle");
    const auto processorTime = [] {
        timespec used;
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
        return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
    };
    double used = 0;
    for (auto _ : state) {
        const double before = processorTime();
        CThread::sleep(2000);
        used += processorTime() - before;
    }
    state.counters["percent_of_core"] = used / 2 * 100;
}
BENCHMARK(idle)->Name("Fundo/Timer/idle")->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

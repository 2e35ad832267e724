#include <benchmark/benchmark.h>
#include <sched.h>
#include <time.h>

#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "Fundo/Fundo3/Thread.h"
#include "Fundo3/Thread/LoadingController.h"

using namespace Tovra::Fundo;

namespace {

double seconds(clockid_t clock) {
    timespec now;
    ::clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The processor time that a busy loop gets, by the thread's own clock.
double share(double duration) {
    const double start = seconds(CLOCK_MONOTONIC);
    const double before = seconds(CLOCK_THREAD_CPUTIME_ID);
    while (seconds(CLOCK_MONOTONIC) - start < duration)
        benchmark::ClobberMemory();
    return (seconds(CLOCK_THREAD_CPUTIME_ID) - before) / (seconds(CLOCK_MONOTONIC) - start) * 100;
}

// What the loop gets over five seconds, and what it gets without control: less than 100 if the machine has
// other work, which the lowest real-time priority keeps away where it is permitted.
void busyLoop(benchmark::State& state) {
    const sched_param lowest{1};
    const sched_param none{};
    ::sched_setscheduler(0, SCHED_FIFO, &lowest);
    for (auto _ : state) {
        state.counters["uncontrolled"] = share(0.5);
        CThread::load(static_cast<int>(state.range(0)));
        state.counters["controlled"] = CThreadLoadingController::instance()->looping() ? 1 : 0;
        state.counters["percent_of_core"] = share(5);
        CThread::load(100);
    }
    ::sched_setscheduler(0, SCHED_OTHER, &none);
}
BENCHMARK(busyLoop)->Name("Fundo/Load/busy_loop")->Arg(30)->Arg(70)->Iterations(1)->Repetitions(1);

// What the system has booked on a thread, in seconds.
double booked(int tid) {
    std::ifstream file("/proc/self/task/" + std::to_string(tid) + "/schedstat");
    double nanoseconds = 0;
    file >> nanoseconds;
    return nanoseconds * 1e-9;
}

// What the controller itself uses for a number of busy threads over five seconds.
void controller(benchmark::State& state) {
    for (auto _ : state) {
        std::atomic<bool> done{false};
        std::vector<std::thread> threads;
        for (int64_t i = 0; i < state.range(0); ++i) {
            threads.emplace_back([&] {
                CThread::load(50);
                while (!done)
                    benchmark::ClobberMemory();
                CThread::load(100);
            });
        }
        CThread::sleep(200);
        CThreadLoadingController& self = *CThreadLoadingController::instance();
        state.counters["controlled"] = self.looping() ? 1 : 0;
        const double start = seconds(CLOCK_MONOTONIC);
        const double before = booked(self.getThreadID());
        CThread::sleep(5000);
        const double used = booked(self.getThreadID()) - before;
        state.counters["percent_of_core"] = used / (seconds(CLOCK_MONOTONIC) - start) * 100;
        done = true;
        for (std::thread& thread : threads)
            thread.join();
    }
}
BENCHMARK(controller)->Name("Fundo/Load/controller")->Arg(1)->Arg(4)->Iterations(1)->Repetitions(1);

}  // namespace

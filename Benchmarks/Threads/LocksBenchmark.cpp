#include <benchmark/benchmark.h>
#include <pthread.h>
#include <semaphore.h>
#include <unistd.h>

#include <mutex>
#include <shared_mutex>
#include <thread>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/ReadWriteMutex.h"
#include "Fundo/Fundo3/RecursiveMutex.h"
#include "Fundo/Fundo3/Semaphore.h"
#include "Fundo/Fundo3/ThreadSpecific.h"

using namespace Tovra::Fundo;

namespace {

// A process with threads, as every user of these classes: the C library has cheaper paths for a single
// thread.
const std::thread s_company = [] {
    std::thread company([] { pause(); });
    company.detach();
    return company;
}();

template <class Mutex>
void ours(benchmark::State& state) {
    Mutex mutex;
    for (auto _ : state) {
        mutex.enter();
        mutex.leave();
    }
}

template <class Mutex>
void theirs(benchmark::State& state) {
    Mutex mutex;
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}

BENCHMARK_TEMPLATE(ours, CMutex)->Name("Fundo/Mutex/uncontended");
BENCHMARK_TEMPLATE(theirs, std::mutex)->Name("Std/Mutex/uncontended");
BENCHMARK_TEMPLATE(ours, CRecursiveMutex)->Name("Fundo/RecursiveMutex/uncontended");
BENCHMARK_TEMPLATE(theirs, std::recursive_mutex)->Name("Std/RecursiveMutex/uncontended");

void readOurs(benchmark::State& state) {
    CReadWriteMutex mutex;
    for (auto _ : state) {
        mutex.enterReading();
        mutex.leave();
    }
}
void readTheirs(benchmark::State& state) {
    std::shared_mutex mutex;
    for (auto _ : state) {
        mutex.lock_shared();
        mutex.unlock_shared();
    }
}
void writeOurs(benchmark::State& state) {
    CReadWriteMutex mutex;
    for (auto _ : state) {
        mutex.enterWriting();
        mutex.leave();
    }
}
BENCHMARK(readOurs)->Name("Fundo/ReadWriteMutex/read");
BENCHMARK(readTheirs)->Name("Std/ReadWriteMutex/read");
BENCHMARK(writeOurs)->Name("Fundo/ReadWriteMutex/write");
BENCHMARK_TEMPLATE(theirs, std::shared_mutex)->Name("Std/ReadWriteMutex/write");

// One face for both semaphores.
struct OurSemaphore {
    void post() { m_semaphore.post(); }
    void wait() { m_semaphore.pend(); }
    CSemaphore m_semaphore{0};
};
struct PosixSemaphore {
    PosixSemaphore() { sem_init(&m_semaphore, 0, 0); }
    ~PosixSemaphore() { sem_destroy(&m_semaphore); }
    void post() { sem_post(&m_semaphore); }
    void wait() { sem_wait(&m_semaphore); }
    sem_t m_semaphore;
};

template <class Semaphore>
void postAndPend(benchmark::State& state) {
    Semaphore semaphore;
    for (auto _ : state) {
        semaphore.post();
        semaphore.wait();
    }
}

// There and back between two threads.
template <class Semaphore>
void handOver(benchmark::State& state) {
    Semaphore there;
    Semaphore back;
    bool ended = false;
    std::thread other([&] {
        for (there.wait(); !ended; there.wait())
            back.post();
    });
    for (auto _ : state) {
        there.post();
        back.wait();
    }
    ended = true;
    there.post();
    other.join();
}

BENCHMARK_TEMPLATE(postAndPend, OurSemaphore)->Name("Fundo/Semaphore/post_pend");
BENCHMARK_TEMPLATE(postAndPend, PosixSemaphore)->Name("Posix/Semaphore/post_pend");
BENCHMARK_TEMPLATE(handOver, OurSemaphore)->Name("Fundo/Semaphore/hand_over")->UseRealTime();
BENCHMARK_TEMPLATE(handOver, PosixSemaphore)->Name("Posix/Semaphore/hand_over")->UseRealTime();

void slotOurs(benchmark::State& state) {
    CThreadSpecific slot;
    void* value = nullptr;
    for (auto _ : state) {
        slot.setValue(&slot);
        slot.getValue(&value);
        benchmark::DoNotOptimize(value);
    }
}
void slotTheirs(benchmark::State& state) {
    pthread_key_t key;
    pthread_key_create(&key, nullptr);
    for (auto _ : state) {
        pthread_setspecific(key, &key);
        void* value = pthread_getspecific(key);
        benchmark::DoNotOptimize(value);
    }
    pthread_key_delete(key);
}
BENCHMARK(slotOurs)->Name("Fundo/ThreadSpecific/set_get");
BENCHMARK(slotTheirs)->Name("Posix/ThreadSpecific/set_get");

}  // namespace

// Packets and pools beside what else a program would take.
//
// A process has one packet policy and one malloc, so the program runs itself once for each group of cases:
// packets of the system policy, of a pool, of a huge pool, and the peers that take malloc's place.
// FUNDO_BENCH_GROUP tells a run which group it is; without it the program starts them all in turn.

#include <benchmark/benchmark.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Memory/MemPool.h"
#include "Memory/Packet.h"
#include "Memory/PacketManager.h"

#ifdef HAVE_BOOST
#include <boost/pool/pool.hpp>
#endif

using namespace Tovra::Memory;
using benchmark::RegisterBenchmark;

namespace {

constexpr size_t kSizes[] = {256, 1024, 65536, 1048576};

using SharedBytes = std::shared_ptr<unsigned char[]>;

unsigned char* bytesOf(const CPacket& packet) { return static_cast<unsigned char*>(packet.getBuffer()); }

// Creation and release: the first byte is written, so that the memory is touched on both sides.

void createPacket(benchmark::State& state, size_t size) {
    for (auto _ : state) {
        const CPacket packet(size, 0);
        bytesOf(packet)[0] = 1;
        benchmark::ClobberMemory();
    }
}

void createShared(benchmark::State& state, size_t size) {
    for (auto _ : state) {
        const SharedBytes bytes(new unsigned char[size]);
        bytes[0] = 1;
        benchmark::ClobberMemory();
    }
}

void registerCreation(const char* owner, const std::string& subject, size_t largest) {
    const bool ours = std::strcmp(owner, "Fundo") == 0;
    for (const size_t size : kSizes) {
        if (size > largest) break;
        RegisterBenchmark((owner + ("/" + subject) + "/" + std::to_string(size)).c_str(),
                          ours ? createPacket : createShared, size);
    }
}

// A burst: 64 buffers of 64 KiB alive at once.

constexpr size_t kBurst = 64;
constexpr size_t kBurstSize = 65536;

void burstOfPackets(benchmark::State& state) {
    CPacket packets[kBurst];
    for (auto _ : state) {
        for (CPacket& packet : packets) {
            packet = CPacket(kBurstSize, 0);
            bytesOf(packet)[0] = 1;
        }
        for (CPacket& packet : packets)
            packet.reset();
    }
}

void burstOfMalloc(benchmark::State& state) {
    void* blocks[kBurst];
    for (auto _ : state) {
        for (void*& block : blocks) {
            block = std::malloc(kBurstSize);
            static_cast<unsigned char*>(block)[0] = 1;
            benchmark::DoNotOptimize(block);
        }
        for (void* block : blocks)
            std::free(block);
    }
}

// Handles of one buffer on several threads at once.

template <class Handle>
void copyHandle(benchmark::State& state, const Handle* handle) {
    for (auto _ : state) {
        Handle copy(*handle);
        benchmark::DoNotOptimize(copy);
    }
}

template <class Handle>
void registerCopies(const char* owner, const Handle& handle) {
    static const Handle s_handle(handle);
    for (const int threads : {1, 2, 4})
        RegisterBenchmark((owner + std::string("/Handle/copy_drop")).c_str(), copyHandle<Handle>, &s_handle)
            ->Threads(threads)
            ->UseRealTime();
}

void subPacket(benchmark::State& state) {
    const CPacket parent(4096, 0);
    for (auto _ : state) {
        CPacket sub(parent, 100, 200, 0);
        benchmark::DoNotOptimize(sub);
    }
}

// A pointer into the parent's bytes, and a block of its own for what describes the part.
void aliasingPointer(benchmark::State& state) {
    const SharedBytes parent(new unsigned char[4096]);
    struct Part {
        std::shared_ptr<unsigned char> bytes;
        size_t size;
    };
    for (auto _ : state) {
        auto part = std::make_unique<Part>(Part{{parent, parent.get() + 100}, 200});
        benchmark::DoNotOptimize(part);
    }
}

// Appending until 64 KiB are full, then again from the start; the time is that of one append.

constexpr size_t kFull = 65536;

void putBuffer(benchmark::State& state, size_t size) {
    std::vector<unsigned char> data(size, 1);
    CPacket packet(kFull, 0);
    packet.resize(0);
    for (auto _ : state) {
        if (packet.putBuffer(data.data(), size) == 0) packet.resize(0);
        benchmark::ClobberMemory();
    }
}

void appendToVector(benchmark::State& state, size_t size) {
    std::vector<unsigned char> data(size, 1);
    std::vector<unsigned char> bytes;
    bytes.reserve(kFull);
    for (auto _ : state) {
        if (bytes.capacity() - bytes.size() < size) bytes.clear();
        bytes.insert(bytes.end(), data.begin(), data.end());
        benchmark::ClobberMemory();
    }
}

void memPool(benchmark::State& state) {
    Tovra::Memory::Detail::CMemPool pool(64, 256);
    for (auto _ : state) {
        void* object = pool.malloc();
        benchmark::DoNotOptimize(object);
        pool.free(object);
    }
}

#ifdef HAVE_BOOST
void boostPool(benchmark::State& state) {
    boost::pool<> pool(64, 256);
    std::mutex mutex;
    for (auto _ : state) {
        void* object;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            object = pool.malloc();
        }
        benchmark::DoNotOptimize(object);
        const std::lock_guard<std::mutex> lock(mutex);
        pool.free(object);
    }
}
#endif

// The groups.

void configurePool(size_t totalSize, CPacketManager::MemoryOperator* memop) {
    CPacketManager::PoolParameter param;
    param.totalSize = totalSize;
    CPacketManager::config(CPacketManager::PolicyPool, memop, &param);
}

void registerSystem() {
    registerCreation("Fundo", "SystemPacket", kSizes[3]);
    registerCreation("SharedPtr", "SystemPacket", kSizes[3]);
    registerCreation("SharedPtr", "PoolPacket", kSizes[2]);
    registerCopies("Fundo", CPacket(100, 0));
    registerCopies("SharedPtr", SharedBytes(new unsigned char[100]));
    RegisterBenchmark("Fundo/SubPacket/create", subPacket);
    RegisterBenchmark("SharedPtr/SubPacket/create", aliasingPointer);
    for (const size_t size : {size_t{16}, size_t{1024}}) {
        RegisterBenchmark(("Fundo/PutBuffer/" + std::to_string(size)).c_str(), putBuffer, size);
        RegisterBenchmark(("Vector/PutBuffer/" + std::to_string(size)).c_str(), appendToVector, size);
    }
    RegisterBenchmark("Fundo/MemPool/64", memPool);
#ifdef HAVE_BOOST
    RegisterBenchmark("Boost/MemPool/64", boostPool);
#endif
    RegisterBenchmark("Glibc/Burst/64x64KiB_beside_glibc", burstOfMalloc);
}

// The default pool.
void registerPool() {
    configurePool(size_t{2} << 20, nullptr);
    registerCreation("Fundo", "PoolPacket", kSizes[2]);
}

void registerBurst() {
    configurePool(size_t{16} << 20, nullptr);
    for (const char* beside : {"", "_beside_glibc", "_beside_mimalloc"})
        RegisterBenchmark((std::string("Fundo/Burst/64x64KiB") + beside).c_str(), burstOfPackets);
}

void registerHugePool() {
    static constexpr size_t kBytes = (size_t{4} << 30) + 1024;
    CPacketManager::MemoryOperator memop;
    memop.malloc = {[](size_t size) {
        return mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1,
                    0);
    }};
    memop.free = {[](void* region) { munmap(region, kBytes); }};
    configurePool(size_t{4} << 30, &memop);
    registerCreation("Fundo", "PoolOf4GiB", kSizes[2]);
}

void registerJemalloc() { RegisterBenchmark("Jemalloc/Burst/64x64KiB", burstOfMalloc); }

void registerMimalloc() { RegisterBenchmark("Mimalloc/Burst/64x64KiB_beside_mimalloc", burstOfMalloc); }

struct Group {
    const char* name;
    void (*registerCases)();
    const char* allocator;  // loaded in the place of malloc, if any
};

constexpr Group kGroups[] = {
    {"system", registerSystem, nullptr},
    {"pool", registerPool, nullptr},
    {"burst", registerBurst, nullptr},
    {"huge", registerHugePool, nullptr},
#ifdef JEMALLOC_LIBRARY
    {"jemalloc", registerJemalloc, JEMALLOC_LIBRARY},
#endif
#ifdef MIMALLOC_LIBRARY
    {"mimalloc", registerMimalloc, MIMALLOC_LIBRARY},
#endif
};

constexpr char kVariable[] = "FUNDO_BENCH_GROUP";

int runGroup(const Group& group, int argc, char** argv) {
    // Counts are cheaper in a process that never had a second thread; users of packets have.
    std::thread([] {}).join();
    group.registerCases();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

int startGroup(const Group& group, char** argv) {
    const pid_t child = fork();
    if (child == 0) {
        setenv(kVariable, group.name, 1);
        if (group.allocator != nullptr) setenv("LD_PRELOAD", group.allocator, 1);
        execv("/proc/self/exe", argv);
        _exit(127);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const char* chosen = std::getenv(kVariable);
    int result = 0;
    for (const Group& group : kGroups) {
        if (chosen == nullptr) {
            result |= startGroup(group, argv);
        } else if (std::strcmp(chosen, group.name) == 0) {
            return runGroup(group, argc, argv);
        }
    }
    return result;
}

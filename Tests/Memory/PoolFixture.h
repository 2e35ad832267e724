#pragma once

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "Memory/PacketManager.h"

namespace Tests {

using Tovra::Memory::CPacketManager;

// Counts what passes through a memory operator; can be told to fail.
struct CountingOperator {
    std::atomic<int> mallocs{0};
    std::atomic<int> frees{0};
    std::atomic<int> copies{0};
    std::atomic<size_t> lastSize{0};
    std::atomic<bool> failing{false};

    void* malloc(size_t size) {
        ++mallocs;
        lastSize = size;
        return failing ? nullptr : std::malloc(size);
    }
    void free(void* pointer) {
        ++frees;
        std::free(pointer);
    }
    void* memcpy(void* dst, const void* src, size_t n) {
        ++copies;
        return std::memcpy(dst, src, n);
    }

    CPacketManager::MemoryOperator get() {
        CPacketManager::MemoryOperator memop;
        memop.malloc = {&CountingOperator::malloc, this};
        memop.free = {&CountingOperator::free, this};
        memop.memcpy = {&CountingOperator::memcpy, this};
        return memop;
    }
};

// A pool for the whole test: each runs in a process of its own.
inline CPacketManager* configure(CPacketManager::Policy policy, size_t totalSize = 0x200000,
                                 size_t chunkSize = 1024) {
    CPacketManager::PoolParameter param;
    param.totalSize = totalSize;
    param.chunkSize = chunkSize;
    CPacketManager::config(policy, nullptr, &param);
    return CPacketManager::instance();
}

}  // namespace Tests

#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <future>
#include <random>
#include <string>
#include <vector>

#include "Memory/PacketManager.h"
#include "Support/LogCapture.h"

namespace Tests {

using Support::LogCapture;
using Tovra::Memory::CPacketManager;

// Counts what passes through a memory operator; can be told where its blocks start.
struct CountingOperator {
    int frees = 0;
    int copies = 0;
    size_t lastSize = 0;
    size_t shift = 0;

    void* malloc(size_t size) {
        lastSize = size;
        return static_cast<char*>(std::malloc(size + shift)) + shift;
    }
    void free(void* pointer) {
        ++frees;
        std::free(pointer == nullptr ? nullptr : static_cast<char*>(pointer) - shift);
    }
    void* memcpy(void* dst, const void* src, size_t n) {
        ++copies;
        return std::memcpy(dst, src, n);
    }

    CPacketManager::MemoryOperator memop{{&CountingOperator::malloc, this},
                                         {&CountingOperator::free, this},
                                         {&CountingOperator::memcpy, this}};
};

// The manager for the whole test: each runs in a process of its own.
inline CPacketManager* configure(CPacketManager::Policy policy, CPacketManager::PoolParameter param = {},
                                 CountingOperator* counting = nullptr) {
    CPacketManager::config(policy, counting == nullptr ? nullptr : &counting->memop, &param);
    return CPacketManager::instance();
}

// The block of a pool with the usual chunks that holds so many bytes.
inline size_t blockFor(size_t size) {
    size_t block = 1024;
    while (block < size)
        block *= 2;
    return block;
}

// Runs work(0), work(1) and so on, each on a thread of its own.
template <class Work>
void onThreads(unsigned count, Work work) {
    std::vector<std::future<void>> running;  // each waits for its thread when it goes
    for (unsigned number = 0; number < count; ++number)
        running.push_back(std::async(std::launch::async, work, number));
}

}  // namespace Tests

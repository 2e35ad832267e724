#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "Memory/Buffer.h"
#include "Memory/MemPool.h"
#include "Memory/RefCount.h"
#include "Support/LogCapture.h"

using namespace Tovra::Memory;
using Support::LogCapture;

namespace {

std::vector<unsigned char> bytes(size_t count) {
    std::vector<unsigned char> result;
    for (size_t i = 0; i < count; ++i)
        result.push_back(static_cast<unsigned char>(i * 7));
    return result;
}

TEST(Buffer, GrowsExactlyOrByItsStep) {
    std::vector<unsigned char> data = bytes(60);
    CBuffer exact;
    EXPECT_EQ(exact.putBuffer(data.data(), 60), 60U);
    exact.putBuffer(data.data(), 1);
    EXPECT_EQ(exact.capacity(), 61U);

    CBuffer stepped;
    stepped.setIncreasedSize(100);
    EXPECT_EQ(stepped.capacity(), 100U);
    EXPECT_EQ(stepped.size(), 0U);
    stepped.putBuffer(data.data(), 60);
    EXPECT_EQ(stepped.capacity(), 100U);
    stepped.putBuffer(data.data(), 60);
    EXPECT_EQ(stepped.capacity(), 200U);
    EXPECT_EQ(stepped.size(), 120U);
    EXPECT_EQ(std::memcmp(stepped.getBuffer(), data.data(), 60), 0);
    EXPECT_EQ(std::memcmp(static_cast<char*>(stepped.getBuffer()) + 60, data.data(), 60), 0);
}

TEST(Buffer, ResizeBeyondTheCapacityCountsTheWholeStep) {
    CBuffer buffer;
    buffer.setIncreasedSize(100);
    buffer.resize(150);
    EXPECT_EQ(buffer.size(), 200U);
    buffer.resize(150);
    EXPECT_EQ(buffer.size(), 150U);
    EXPECT_EQ(buffer.capacity(), 200U);
    buffer.reserve(199);
    EXPECT_EQ(buffer.capacity(), 200U);
    buffer.reserve(250);
    EXPECT_EQ(buffer.capacity(), 250U);
    EXPECT_EQ(buffer.size(), 150U);
    buffer.reset();
    buffer.resize(150);
    EXPECT_EQ(buffer.size(), 150U);
}

TEST(Buffer, WithoutBytesInUseHasNoAddress) {
    CBuffer buffer;
    EXPECT_EQ(buffer.putBuffer(nullptr, 0), 0U);
    EXPECT_EQ(buffer.getBuffer(), nullptr);
    buffer.reserve(10);
    EXPECT_EQ(buffer.getBuffer(), nullptr);
    buffer.resize(1);
    EXPECT_NE(buffer.getBuffer(), nullptr);
}

TEST(Buffer, AppendsItsOwnBytes) {
    std::vector<unsigned char> data = bytes(100);
    CBuffer buffer;
    buffer.putBuffer(data.data(), 100);
    buffer.putBuffer(static_cast<unsigned char*>(buffer.getBuffer()) + 50, 50);
    EXPECT_EQ(std::memcmp(static_cast<char*>(buffer.getBuffer()) + 100, data.data() + 50, 50), 0);
}

TEST(Buffer, OutOfMemoryStaysAsItWasAndSaysSo) {
    LogCapture log(4);
    unsigned char byte = 1;
    CBuffer buffer;
    EXPECT_EQ(buffer.putBuffer(&byte, SIZE_MAX), 0U);
    buffer.resize(SIZE_MAX);
    buffer.reserve(SIZE_MAX - 8);
    buffer.setIncreasedSize(SIZE_MAX);
    EXPECT_EQ(buffer.capacity(), 0U);
    EXPECT_EQ(log.count(" CBuffer putbuffer Malloc fail:\n"), 1U);
    EXPECT_EQ(log.count(" CBuffer resize Malloc fail:\n"), 2U);
    EXPECT_EQ(log.count(" CBuffer setIncreasedSize Malloc fail:\n"), 1U);

    buffer.putBuffer(&byte, 1);
    buffer.setIncreasedSize(7);
    EXPECT_EQ(buffer.putBuffer(&byte, SIZE_MAX), 0U);
    buffer.resize(SIZE_MAX - 1);
    buffer.reserve(SIZE_MAX);
    EXPECT_EQ(buffer.size(), 1U);
    EXPECT_EQ(buffer.capacity(), 1U);
    EXPECT_EQ(log.count("CBuffer putbuffer ReMalloc fail:\n"), 1U);
    EXPECT_EQ(log.count(" CBuffer resize ReMalloc fail:\n"), 1U);
    EXPECT_EQ(log.count(" CBuffer reserve Malloc fail:\n"), 1U);
}

TEST(MemPool, HandsOutABlockInAscendingOrderAndReusesTheLast) {
    Detail::CMemPool pool(1, 4);
    std::vector<unsigned char*> objects;
    for (int i = 0; i < 4; ++i)
        objects.push_back(static_cast<unsigned char*>(pool.malloc()));
    for (size_t i = 1; i < 4; ++i)
        EXPECT_EQ(objects[i] - objects[i - 1], 8);
    void* other = pool.malloc();
    EXPECT_TRUE(other < objects[0] || other >= objects[3] + 8);
    pool.free(objects[1]);
    pool.free(objects[3]);
    EXPECT_EQ(pool.malloc(), objects[3]);
    EXPECT_EQ(pool.malloc(), objects[1]);
}

TEST(MemPool, KeepsObjectsThatAreNoWholeWordsApartUnderThreads) {
    Detail::CMemPool pool(12, 5);
    const auto work = [&pool](int mark) {
        for (int round = 0; round < 2000; ++round) {
            void* objects[7];
            for (void*& object : objects)
                object = std::memset(pool.malloc(), mark, 12);
            const std::vector<unsigned char> expected(12, static_cast<unsigned char>(mark));
            for (void* object : objects) {
                EXPECT_EQ(std::memcmp(object, expected.data(), 12), 0);
                pool.free(object);
            }
        }
    };
    std::vector<std::thread> threads;
    for (int mark = 1; mark <= 4; ++mark)
        threads.emplace_back(work, mark);
    for (std::thread& thread : threads)
        thread.join();
}

TEST(RefCount, NeverRisesFromZero) {
    CRefCount count;
    EXPECT_EQ(count.tryIncStrong(), 2);
    EXPECT_EQ(count.incWeak(), 2);
    EXPECT_EQ(count.decStrong(), 1);
    EXPECT_EQ(count.decStrong(), 0);
    EXPECT_EQ(count.tryIncStrong(), 0);
    EXPECT_EQ(count.getStrong(), 0U);
    EXPECT_EQ(count.decWeak(), 1);
    EXPECT_EQ(count.getWeak(), 1U);
}

TEST(RefCount, PromotionsAndReleasesOfManyThreadsAddUp) {
    CRefCount count;
    const auto work = [&count] {
        for (int i = 0; i < 20000; ++i) {
            if (count.tryIncStrong() > 0) count.decStrong();
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count.getStrong(), 1U);
}

}  // namespace

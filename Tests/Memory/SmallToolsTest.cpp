#include "Memory/Buffer.h"
#include "Memory/MemPool.h"
#include "Memory/PoolFixture.h"
#include "Memory/RefCount.h"

using namespace Tests;
using namespace Tovra::Memory;

namespace {

size_t put(CBuffer& buffer, std::string text) {
    return buffer.putBuffer(reinterpret_cast<unsigned char*>(text.data()), text.size());
}

std::string content(const CBuffer& buffer) {
    return {static_cast<const char*>(buffer.getBuffer()), buffer.size()};
}

TEST(Buffer, GrowsExactlyOrByItsStep) {
    const std::string text = "sixty bytes" + std::string(49, '.');
    CBuffer buffer;
    put(buffer, "x");
    EXPECT_EQ(put(buffer, text), 60U);
    EXPECT_EQ(buffer.capacity(), 61U);
    buffer.setIncreasedSize(100);
    put(buffer, text);
    EXPECT_EQ(buffer.capacity(), 200U);
    EXPECT_EQ(content(buffer), "x" + text + text);
    // What is appended may be the buffer's own, in the block that the growth frees.
    buffer.putBuffer(static_cast<unsigned char*>(buffer.getBuffer()) + 20, 100);
    EXPECT_EQ(content(buffer), "x" + text + text + (text + text).substr(19, 100));
}

TEST(Buffer, ResizeBeyondTheCapacityCountsTheWholeStep) {
    CBuffer buffer;
    EXPECT_EQ(buffer.putBuffer(nullptr, 0), 0U);
    buffer.setIncreasedSize(100);
    EXPECT_EQ(buffer.capacity(), 0U);
    EXPECT_EQ(buffer.getBuffer(), nullptr);
    const auto after = [&buffer](void (CBuffer::*change)(size_t), size_t bytes) {
        (buffer.*change)(bytes);
        return std::pair(buffer.size(), buffer.capacity());
    };
    using State = std::pair<size_t, size_t>;
    EXPECT_EQ(after(&CBuffer::resize, 150), State(200, 200));
    EXPECT_EQ(after(&CBuffer::resize, 150), State(150, 200));
    EXPECT_EQ(after(&CBuffer::reserve, 199), State(150, 200));
    EXPECT_EQ(after(&CBuffer::reserve, 250), State(150, 250));
    buffer.reset();
    EXPECT_EQ(after(&CBuffer::reserve, 10), State(0, 10));
    buffer.reset();
    EXPECT_EQ(after(&CBuffer::setIncreasedSize, 100), State(0, 100));
    buffer.reset();
    EXPECT_EQ(after(&CBuffer::resize, 150), State(150, 150));
}

TEST(Buffer, OutOfMemoryStaysAsItWasAndSaysSo) {
    LogCapture log(4);
    unsigned char byte = 1;
    CBuffer buffer;
    const auto fail = [&](size_t capacity) {
        EXPECT_EQ(buffer.putBuffer(&byte, SIZE_MAX), 0U);
        buffer.resize(SIZE_MAX - 1);
        buffer.reserve(SIZE_MAX - 8);
        EXPECT_EQ(std::pair(buffer.size(), buffer.capacity()), std::pair(capacity, capacity));
    };
    fail(0);
    buffer.setIncreasedSize(SIZE_MAX);
    buffer.putBuffer(&byte, 1);
    buffer.setIncreasedSize(7);
    fail(1);
    const std::vector<std::pair<const char*, size_t>> lines = {
        {" CBuffer putbuffer Malloc fail:\n", 1}, {" CBuffer setIncreasedSize Malloc fail:\n", 1},
        {" CBuffer resize Malloc fail:\n", 2},    {"CBuffer putbuffer ReMalloc fail:\n", 1},
        {" CBuffer resize ReMalloc fail:\n", 1},  {" CBuffer reserve Malloc fail:\n", 1}};
    for (const auto& [line, times] : lines)
        EXPECT_EQ(log.count(line), times) << line;
}

TEST(MemPool, HandsOutABlockInAscendingOrderAndReusesTheLast) {
    Detail::CMemPool pool(1, 4);
    std::vector<unsigned char*> objects;
    for (int i = 0; i < 5; ++i)
        objects.push_back(static_cast<unsigned char*>(pool.malloc()));
    for (size_t i = 1; i < 4; ++i)
        EXPECT_EQ(objects[i] - objects[i - 1], 8);
    EXPECT_TRUE(objects[4] < objects[0] || objects[4] >= objects[3] + 8);
    pool.free(objects[1]);
    pool.free(objects[3]);
    EXPECT_EQ(pool.malloc(), objects[3]);
    EXPECT_EQ(pool.malloc(), objects[1]);
}

TEST(MemPool, KeepsObjectsThatAreNoWholeWordsApartUnderThreads) {
    Detail::CMemPool pool(12, 5);
    onThreads(4, [&pool](unsigned mark) {
        const std::vector<unsigned char> expected(12, static_cast<unsigned char>(mark + 1));
        for (int round = 0; round < 2000; ++round) {
            void* objects[7];
            for (void*& object : objects)
                object = std::memcpy(pool.malloc(), expected.data(), 12);
            for (void* object : objects) {
                EXPECT_EQ(std::memcmp(object, expected.data(), 12), 0);
                pool.free(object);
            }
        }
    });
}

TEST(RefCount, NeverRisesFromZero) {
    CRefCount count;
    EXPECT_EQ(count.incStrong(), 2);
    EXPECT_EQ(count.tryIncStrong(), 3);
    EXPECT_EQ(count.incWeak(), 2);
    onThreads(4, [&count](unsigned) {
        for (int i = 0; i < 20000; ++i) {
            if (count.tryIncStrong() > 0) count.decStrong();
        }
    });
    EXPECT_EQ(count.getStrong(), 3U);
    for (const int left : {2, 1, 0})
        EXPECT_EQ(count.decStrong(), left);
    EXPECT_EQ(count.tryIncStrong(), 0);
    EXPECT_EQ(count.getStrong(), 0U);
    EXPECT_EQ(count.decWeak(), 1);
    EXPECT_EQ(count.getWeak(), 1U);
}

}  // namespace

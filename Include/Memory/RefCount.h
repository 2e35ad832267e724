#pragma once

#include <atomic>
#include <cstdint>

namespace Tovra::Memory {

/// A pair of atomic counters, strong and weak, both 1 at first. It owns no object: it counts, and the owner
/// decides what a zero means. Any thread may call any operation; nothing here locks.
class CRefCount {
public:
    CRefCount() = default;

    /// The strong count.
    uint64_t getStrong() const { return m_strong.load(std::memory_order_acquire); }
    /// The weak count.
    uint64_t getWeak() const { return m_weak.load(std::memory_order_acquire); }

    /// Adds one. @return the new strong count, cut to 32 bits
    int incStrong() { return add(m_strong); }
    /// Takes one away. @return the new strong count, cut to 32 bits; 0 to the one caller that took the last
    int decStrong() { return subtract(m_strong); }
    /// Adds one. @return the new weak count, cut to 32 bits
    int incWeak() { return add(m_weak); }
    /// Takes one away. @return the new weak count, cut to 32 bits
    int decWeak() { return subtract(m_weak); }

    /// Promotes a weak reference: adds one unless the strong count is 0, since a count that reached 0 never
    /// rises again. @return the new strong count, cut to 32 bits; 0 if the object is dying
    int tryIncStrong() {
        uint64_t found = getStrong();
        while (found != 0) {
            if (m_strong.compare_exchange_weak(found, found + 1, std::memory_order_acq_rel)) {
                return static_cast<int>(found + 1);
            }
        }
        return 0;
    }

private:
    using Counter = std::atomic<uint64_t>;

    static int add(Counter& counter) {
        return static_cast<int>(counter.fetch_add(1, std::memory_order_relaxed) + 1);
    }
    static int subtract(Counter& counter) {
        return static_cast<int>(counter.fetch_sub(1, std::memory_order_acq_rel) - 1);
    }

    Counter m_strong{1};
    Counter m_weak{1};
};

}  // namespace Tovra::Memory

#pragma once

#include <atomic>

namespace Tovra::Fundo::Detail {

// A value that is written under a lock, or by one thread, and may be read by any without. A reader sees what
// its writer did before. It costs no more than a plain variable, unlike std::atomic's assignment.
template <typename T>
class Published {
public:
    Published(T value) : m_value(value) {}
    Published(const Published&) = delete;

    operator T() const { return m_value.load(std::memory_order_acquire); }
    T operator->() const { return *this; }
    Published& operator=(T value) {
        m_value.store(value, std::memory_order_release);
        return *this;
    }

private:
    std::atomic<T> m_value;
};

}  // namespace Tovra::Fundo::Detail

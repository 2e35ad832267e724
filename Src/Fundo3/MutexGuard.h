#pragma once

namespace Tovra::Fundo::Detail {

// Holds a mutex of any of the library's classes for a scope, exceptions and a cancelled thread included.
template <class Mutex>
class MutexGuard {
public:
    explicit MutexGuard(Mutex& mutex) : m_mutex(mutex) { m_mutex.enter(); }
    ~MutexGuard() { m_mutex.leave(); }
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

private:
    Mutex& m_mutex;
};

}  // namespace Tovra::Fundo::Detail

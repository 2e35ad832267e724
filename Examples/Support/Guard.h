#pragma once

#include "Fundo/Fundo3/Mutex.h"

// Holds a mutex for a scope.
class Guard {
public:
    explicit Guard(Tovra::Fundo::CMutex& mutex) : m_mutex(mutex) { m_mutex.enter(); }
    ~Guard() { m_mutex.leave(); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    Tovra::Fundo::CMutex& m_mutex;
};

#pragma once

#include <new>
#include <utility>

namespace Tovra::Fundo::Detail {

// An object that is built once and never destroyed: state that a static destructor, an exit handler or a
// thread still running at exit may touch. It lies in static storage, so leak checkers see what it owns.
//
//     static Immortal<CMutex> s_mutex;   // function-local: built on first use, by one thread
template <class T>
class Immortal {
public:
    template <typename... A>
    explicit Immortal(A&&... arguments) {
        ::new (static_cast<void*>(m_storage)) T(std::forward<A>(arguments)...);
    }
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;

    T& operator*() { return *std::launder(reinterpret_cast<T*>(m_storage)); }
    T* operator->() { return &**this; }

private:
    alignas(T) unsigned char m_storage[sizeof(T)];
};

}  // namespace Tovra::Fundo::Detail

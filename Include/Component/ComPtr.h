#pragma once

#include <type_traits>
#include <utility>

#include "Component/Detail/ComponentHelper.h"
#include "Component/Unknown.h"

namespace Tovra::Component {

/// A counted pointer to an object, together with the client through which it was reached. Every call through
/// it runs as that client's user.
///
/// A factory is no counted object: a pointer to one counts its client alone. Different pointers to one object
/// may be used on different threads, one pointer on one thread at a time.
template <class Y>
class TComPtr {
public:
    using element_type = Y;  ///< The type pointed to.

    /// An empty pointer.
    TComPtr() noexcept = default;

    /// Takes over one reference to the object and one to its client, either of which may be null.
    TComPtr(Y* object, IClient* client = nullptr) noexcept : m_ptr(object), m_client(client) {}

    /// Takes one more reference to both.
    TComPtr(const TComPtr& other) : m_ptr(other.m_ptr), m_client(other.m_client) { addRefs(); }

    /// Takes the references over and leaves the other pointer empty.
    TComPtr(TComPtr&& other) noexcept
        : m_ptr(std::exchange(other.m_ptr, nullptr)), m_client(std::exchange(other.m_client, nullptr)) {}

    /// Drops both references, the object's first.
    ~TComPtr() { releaseRefs(); }

    /// Takes the new references before it drops the old ones.
    TComPtr& operator=(const TComPtr& other) {
        if (this == &other) return *this;
        TComPtr copy(other);
        swap(copy);
        return *this;
    }

    /// Takes the references over and drops the old ones.
    TComPtr& operator=(TComPtr&& other) noexcept {
        if (this == &other) return *this;
        TComPtr taken(std::move(other));
        swap(taken);
        return *this;
    }

    /// Makes the client's user the current one of this thread, then gives the object; an empty pointer stops
    /// the process by assertion.
    Y* operator->() const {
        Detail::CComponentHelper::setAsCurrentUser(m_client);
        if (m_ptr == nullptr) stop();
        return m_ptr;
    }

    Y* get() const noexcept { return m_ptr; }                             ///< The object, or null.
    IClient* client() const noexcept { return m_client; }                 ///< The client, or null.
    explicit operator bool() const noexcept { return m_ptr != nullptr; }  ///< Whether there is an object.

    /// Exchanges objects and clients.
    void swap(TComPtr& other) noexcept {
        std::swap(m_ptr, other.m_ptr);
        std::swap(m_client, other.m_client);
    }

    /// Drops both references.
    void reset() { TComPtr().swap(*this); }

private:
    [[noreturn]] static void stop() { Detail::emptyComPtrUsed(__PRETTY_FUNCTION__, __LINE__); }

    void addRefs() const {
        if constexpr (std::is_base_of_v<IUnknown, Y>) Detail::CComponentHelper::addRef(m_ptr);
        if (m_client != nullptr) Detail::addRefToClient(m_client);
    }

    void releaseRefs() const {
        if constexpr (std::is_base_of_v<IUnknown, Y>) Detail::CComponentHelper::release(m_ptr);
        if (m_client != nullptr) Detail::releaseClient(m_client);
    }

    Y* m_ptr = nullptr;
    IClient* m_client = nullptr;
};

}  // namespace Tovra::Component

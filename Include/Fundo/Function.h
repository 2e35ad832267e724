#pragma once

#include <type_traits>

#include "Fundo/Fundo3/Function.h"

/// The delegate of the old classes: it names a free function, or a member function with its object, and
/// converts to the current delegate. It owns nothing: the caller keeps the object alive. Unlike the current
/// one it has no reuse markers, and carries no name of the object's type.
template <typename R, typename A1>
class TFunction1 {
public:
    /// Stands for the class of any bound object.
    class X {};

    /// An empty delegate.
    TFunction1() noexcept = default;
    /// Binds a free function; null gives the empty delegate.
    TFunction1(R (*function)(A1)) noexcept
        : m_function(function), m_type(function == nullptr ? kEmpty : kPointer) {}
    /// Binds a member function of the object's class or of one of its bases.
    template <class C, class O, typename = std::enable_if_t<std::is_convertible_v<O*, C*>>>
    TFunction1(R (C::*function)(A1), O* object) noexcept
        : m_function(reinterpret_cast<Member>(function)),
          // The conversion to the member's own class comes first: it may move the address.
          m_object(static_cast<X*>(static_cast<void*>(static_cast<C*>(object)))),
          m_type(kMember) {}

    /// Whether nothing is bound.
    bool empty() const noexcept { return m_type == kEmpty; }
    /// Calls what is bound. An empty delegate crashes.
    R operator()(A1 argument) const { return current()(argument); }
    /// Whether both name the same function and object.
    bool operator==(const TFunction1& other) const noexcept { return current() == other.current(); }
    /// Whether they differ.
    bool operator!=(const TFunction1& other) const noexcept { return current() != other.current(); }

    /// The current delegate of the same function and object; the name of the object's type is that of X.
    operator Tovra::Fundo::TFunction1<R, A1>() const noexcept { return current(); }

private:
    using Current = Tovra::Fundo::TFunction1<R, A1>;
    using Member = R (X::*)(A1);
    using Pointer = R (*)(A1);

    static constexpr unsigned int kEmpty = Current::kEmpty;
    static constexpr unsigned int kMember = Current::kMember;
    static constexpr unsigned int kPointer = Current::kPointer;

    union Target {
        Target() noexcept : member(nullptr) {}
        Target(Member function) noexcept : member(function) {}
        Target(Pointer function) noexcept : pointer(function) {}
        Member member;
        Pointer pointer;
    };

    Current current() const noexcept {
        if (m_type == kMember) return Current(m_function.member, m_object);
        return m_type == kPointer ? Current(m_function.pointer) : Current();
    }

    Target m_function;
    X* m_object = nullptr;
    unsigned int m_type = kEmpty;
};

static_assert(sizeof(TFunction1<void, int>) == 4 * sizeof(void*), "function, object, type");

#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <typeinfo>

#include "Fundo/Fundo3/Error.h"
#include "Fundo/Fundo3/Export.h"

/// @file
/// Delegates: small plain values that name a free function, or a member function with its object. They are
/// the library's only callback type. A delegate owns nothing: the caller keeps the bound object alive for
/// as long as the delegate can be called. Nothing here allocates or locks; copying a delegate while
/// another thread assigns it is the user's race.

namespace Tovra::Fundo {

namespace Detail {

/// Stores the reuse marker of the calling thread, see getCurrentFunctionReuse().
FUNDO_API void setCurrentFunctionReuse(unsigned int marker);

/// The one body of the delegate family; use TFunction1, TFunction2 and so on.
///
///   kind               value             holds
///   empty              0                 nothing; calling it crashes, users test empty() first
///   member             1                 member function and object
///   pointer            2                 free function
///   reuse              16 to 0xFFFFFFFE  member function and object; the value is the marker
///   any reuse          0xFFFFFFFF        as member; equals every reuse marker of its function and object
template <typename R, typename... A>
class TDelegate {
public:
    /// Stands for the class of any bound object.
    class X {};

    static constexpr unsigned int kEmpty = 0;               ///< Nothing to call.
    static constexpr unsigned int kMember = 1;              ///< Member function and object.
    static constexpr unsigned int kPointer = 2;             ///< Free function.
    static constexpr unsigned int kFirstReuse = 16;         ///< The least reuse marker.
    static constexpr unsigned int kAnyReuse = 0xFFFFFFFFU;  ///< Matches every reuse marker.

    /// An empty delegate.
    constexpr TDelegate() noexcept = default;

    /// Binds a free function; null gives the empty delegate. A delegate with static storage that is made so
    /// is there before any initialiser runs.
    constexpr TDelegate(R (*function)(A...)) noexcept
        : m_function(function), m_type(function == nullptr ? kEmpty : kPointer) {}

    /// Binds a member function of the object's class or of one of its bases.
    template <class C, class O, typename = std::enable_if_t<std::is_convertible_v<O*, C*>>>
    TDelegate(R (C::*function)(A...), O* object) noexcept {
        bind<C*>(function, object, kMember);
    }

    /// Binds a const member function.
    template <class C, class O, typename = std::enable_if_t<std::is_convertible_v<O*, const C*>>>
    TDelegate(R (C::*function)(A...) const, O* object) noexcept {
        bind<const C*>(function, object, kMember);
    }

    /// Binds a member function under a marker that the callee can ask for with getCurrentFunctionReuse().
    /// @param reuse 16 or above, asserted; 0xFFFFFFFF equals every marker in comparisons
    template <class C, class O, typename = std::enable_if_t<std::is_convertible_v<O*, C*>>>
    TDelegate(R (C::*function)(A...), O* object, unsigned int reuse) {
        FUNDO_ASSERT(reuse >= 16);
        bind<C*>(function, object, reuse);
    }

    /// Binds a const member function under a marker.
    template <class C, class O, typename = std::enable_if_t<std::is_convertible_v<O*, const C*>>>
    TDelegate(R (C::*function)(A...) const, O* object, unsigned int reuse) {
        FUNDO_ASSERT(reuse >= 16);
        bind<const C*>(function, object, reuse);
    }

    /// Whether nothing is bound.
    bool empty() const noexcept { return m_type == kEmpty; }

    /// The kind, see the table at the class.
    unsigned int type() const noexcept { return m_type; }

    /// Calls what is bound. A reuse delegate first leaves its marker in the calling thread.
    /// Calling an empty delegate is not guarded and crashes.
    R operator()(A... arguments) const {
        if (m_type == kPointer) return m_function.pointer(arguments...);
        if (m_type >= kFirstReuse && m_type != kAnyReuse) setCurrentFunctionReuse(m_type);
        return (m_object->*m_function.member)(arguments...);
    }

protected:
    /// Free functions by address; member functions by code, adjustment and object; reuse markers match
    /// when they are equal or one of them is kAnyReuse. The object's type never counts.
    bool equals(const TDelegate& other) const noexcept {
        if (m_type >= kFirstReuse && other.m_type >= kFirstReuse) {
            const bool match = m_type == kAnyReuse || other.m_type == kAnyReuse || m_type == other.m_type;
            return match && sameMember(other);
        }
        if (m_type != other.m_type) return false;
        if (m_type == kPointer) return m_function.pointer == other.m_function.pointer;
        return m_type != kMember || sameMember(other);
    }

private:
    using Member = R (X::*)(A...);
    using Pointer = R (*)(A...);

    // How the platform's ABI lays out a pointer to member function.
    struct Words {
        uintptr_t code;
        intptr_t adjustment;
    };

    union Target {
        constexpr Target() noexcept : words{0, 0} {}
        constexpr Target(Pointer function) noexcept : pointer(function) {}
        Words words;
        Member member;
        Pointer pointer;
    };

    template <typename Receiver, typename F, typename O>
    void bind(F function, O* object, unsigned int type) noexcept {
        // The conversion to the member's own class comes first: it may move the address.
        const void* receiver = static_cast<Receiver>(object);
        m_function.member = reinterpret_cast<Member>(function);
        m_object = static_cast<X*>(const_cast<void*>(receiver));
        m_type = type;
        m_objectType = typeid(O*).name();
    }

    bool sameMember(const TDelegate& other) const noexcept {
        Words mine;
        Words theirs;
        std::memcpy(&mine, &m_function, sizeof mine);
        std::memcpy(&theirs, &other.m_function, sizeof theirs);
        if (mine.code != theirs.code) return false;
        if (mine.code != 0 && mine.adjustment != theirs.adjustment) return false;
        return m_object == other.m_object;
    }

    Target m_function;
    X* m_object = nullptr;
    unsigned int m_type = kEmpty;
    const char* m_objectType = nullptr;

    static_assert(sizeof(Target) == 2 * sizeof(void*), "a pointer to member function is two words here");
};

}  // namespace Detail

/// The marker of the reuse delegate that was called last in this thread; 0 if none was. A call sets it and
/// nothing clears it: it stands until the next reuse call.
FUNDO_API unsigned int getCurrentFunctionReuse();

/// @cond
// The public templates differ in name and arity alone.
#define FUNDO_DEFINE_DELEGATE(name, parameters, arguments)                                 \
    template <typename R, FUNDO_DELEGATE_UNPACK parameters>                                \
    class name : public Detail::TDelegate<R, FUNDO_DELEGATE_UNPACK arguments> {            \
    public:                                                                                \
        using Detail::TDelegate<R, FUNDO_DELEGATE_UNPACK arguments>::TDelegate;            \
        constexpr name() noexcept = default;                                               \
        bool operator==(const name& other) const noexcept { return this->equals(other); }  \
        bool operator!=(const name& other) const noexcept { return !this->equals(other); } \
    };                                                                                     \
    static_assert(true, "takes the semicolon")
#define FUNDO_DELEGATE_UNPACK(...) __VA_ARGS__

/// @endcond
/// A delegate of one argument.
FUNDO_DEFINE_DELEGATE(TFunction1, (typename A1), (A1));
/// A delegate of two arguments.
FUNDO_DEFINE_DELEGATE(TFunction2, (typename A1, typename A2), (A1, A2));
/// A delegate of three arguments.
FUNDO_DEFINE_DELEGATE(TFunction3, (typename A1, typename A2, typename A3), (A1, A2, A3));
/// A delegate of five arguments.
FUNDO_DEFINE_DELEGATE(TFunction5, (typename A1, typename A2, typename A3, typename A4, typename A5),
                      (A1, A2, A3, A4, A5));

#undef FUNDO_DEFINE_DELEGATE
#undef FUNDO_DELEGATE_UNPACK

static_assert(sizeof(TFunction1<void, int>) == 5 * sizeof(void*), "function, object, type, object type name");
static_assert(std::is_trivially_copyable_v<TFunction1<void, int>>, "delegates are copied field by field");

}  // namespace Tovra::Fundo

#pragma once

#include <atomic>
#include <cstdlib>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Report.h"

namespace Tovra::Fundo::Detail {

// The one way to make a singleton: on first use, by one thread, deleted by an exit handler.
//
// A constructor that reaches for another singleton finishes after it and is registered later, so it is
// destroyed earlier: what a singleton needs outlives it.
//
// A lasting singleton stays in memory for threads that still use it while the process exits; the handler
// calls its atExit(), if it has one, instead of deleting it.
template <class T, bool lasting = false>
class Instance {
public:
    static T* get(const Site& site) {
        T* object = s_holder.load(std::memory_order_acquire);
        return object != nullptr ? object : make(site);
    }

    // Null if nobody has asked for it yet: for the ends of things, which must not begin it.
    static T* existing() { return s_holder.load(std::memory_order_acquire); }

private:
    static T* make(const Site& site) {
        static Immortal<CMutex> s_mutex;
        s_mutex->enter();
        T* object = s_holder.load(std::memory_order_acquire);
        if (object == nullptr) {
            object = new T;
            s_holder.store(object, std::memory_order_release);
            if (std::atexit(end) != 0) {
                report(kInfo, site, "%s:%s atexit failed, line : %d\n", site.source, "instance", site.line);
            }
        }
        s_mutex->leave();
        return object;
    }

    static void end() {
        if constexpr (lasting) {
            callAtExit(s_holder.load(std::memory_order_acquire), 0);
        } else {
            delete s_holder.exchange(nullptr, std::memory_order_acq_rel);
        }
    }

    template <class U>
    static auto callAtExit(U* object, int) -> decltype(object->atExit()) {
        object->atExit();
    }
    template <class U>
    static void callAtExit(U*, long) {}

    static inline std::atomic<T*> s_holder{nullptr};
};

}  // namespace Tovra::Fundo::Detail

// The body of T::instance(); T makes the instance class its friend. Stands in the source that owns T.
#define FUNDO_DEFINE_INSTANCE(T) \
    T* T::instance() { return ::Tovra::Fundo::Detail::Instance<T>::get(FUNDO_SITE); }
#define FUNDO_DEFINE_LASTING_INSTANCE(T) \
    T* T::instance() { return ::Tovra::Fundo::Detail::Instance<T, true>::get(FUNDO_SITE); }

#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "Component/Unknown.h"

namespace Tovra::Component {

// The state of an object. It is born with one reference that nobody owns yet.
struct UnknownInternal {
    std::atomic<int32_t> refCount{1};
    std::atomic<int64_t> referenceClaimed{0};  // only ever set to 1
    bool isInstance = false;                   // stands in the registry's list of shared objects
    bool isClient = false;                     // spares release() a run-time cast
    std::string componentName;                 // class name if the registry made the object
    std::atomic<Detail::CObjectTable*> objectTable{nullptr};

    // Claims the first reference. @return whether it had been claimed before
    bool claim() {
        // Mostly claimed already: a load spares the exchange.
        if (referenceClaimed.load(std::memory_order_relaxed) == 1) return true;
        return referenceClaimed.exchange(1, std::memory_order_acq_rel) == 1;
    }

    int increase() { return refCount.fetch_add(1, std::memory_order_relaxed) + 1; }

    int decrease() { return refCount.fetch_sub(1, std::memory_order_acq_rel) - 1; }

    // Takes a reference unless the object is dying: a count that has reached 0 never rises again.
    bool increaseUnlessZero() {
        int32_t count = refCount.load(std::memory_order_relaxed);
        while (count != 0) {
            if (refCount.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) return true;
        }
        return false;
    }
};

namespace Detail {

// The library's own way to an object's state.
struct UnknownAccess {
    static UnknownInternal& of(IUnknown* object) { return *object->m_internal; }
};

}  // namespace Detail

}  // namespace Tovra::Component

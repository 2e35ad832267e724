#pragma once

#include <cstdint>
#include <memory>

#include "Fundo/Fundo3/Function.h"
#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/Thread.h"

namespace Tovra::Fundo {

/// A fixed table of delegates that are all called, in the order of the table, by one call of the signal.
///
/// Any thread may attach, detach and emit at any time, also from inside a procedure: no lock is held during a
/// call. A detach may return while the procedure still runs, unless it waits.
template <typename A1, typename A2, typename A3, typename A4, typename A5>
class TSignal5 {
public:
    /// A procedure of the signal.
    using Proc = TFunction5<void, A1, A2, A3, A4, A5>;

    /// Where a procedure goes in the table.
    enum SlotPosition : int {
        any = 0,   ///< the first free slot; moves nothing
        back = 1,  ///< the very end
        front = 2  ///< the very start
    };

    /// @param slotCount the size of the table, fixed from here on; below 1 nothing can be attached
    explicit TSignal5(int slotCount)
        : maxSlots(slotCount > 0 ? slotCount : 0), slots(new Slot[static_cast<size_t>(maxSlots)]) {}
    TSignal5(const TSignal5&) = delete;
    TSignal5& operator=(const TSignal5&) = delete;

    /// Attaches a procedure. A slot whose detached procedure still runs is not taken.
    /// @return the number of procedures attached; -5 for one bound with the marker 0xFFFFFFFF, -4 for an
    /// empty one,
    ///         -2 if an equal one is attached, -3 without a free slot or for an unknown position
    int attach(const Proc& proc, SlotPosition position) {
        if (proc.type() == Proc::kAnyReuse) return -5;
        if (proc.empty()) return -4;
        // Contract: tested under a hold of its own, so two threads that attach one procedure at once may both pass.
        if (isAttached(proc)) return -2;
        const Locked locked(mutex);
        Slot* slot = makeRoom(position);
        if (slot == nullptr) return -3;
        slot->function = proc;
        slot->running = 0;
        slot->state = kAttached;
        return ++attachedCount;
    }

    /// Detaches a procedure; one bound with the marker 0xFFFFFFFF detaches every marker of its function and
    /// object.
    /// @param wait waits, in steps of 10 ms, until the procedure does not run, unless this thread began the
    /// latest
    ///             emission
    /// @return the number of procedures still attached; -4 for an empty one, -1 if none was found
    int detach(const Proc& proc, bool wait) {
        if (proc.empty()) return -4;
        Locked locked(mutex);
        bool found = false;
        for (int i = 0; i < maxSlots; ++i) {
            Slot& slot = at(i);
            if (!slot.holds(proc)) continue;
            // Contract: only the latest emitter is known; a self-detach after another thread's emission waits for ever.
            if (wait && emitThreadId != CThread::getCurrentThreadID()) waitForCalls(slot, locked);
            // Another thread may have detached it meanwhile.
            if (slot.state != kAttached) continue;
            slot.state = kEmpty;
            --attachedCount;
            found = true;
            if (proc.type() != Proc::kAnyReuse) break;
        }
        return found ? attachedCount : -1;
    }

    /// Whether an equal procedure is attached; false for an empty one.
    bool isAttached(const Proc& proc) {
        if (proc.empty()) return false;
        const Locked locked(mutex);
        for (int i = 0; i < maxSlots; ++i) {
            if (at(i).holds(proc)) return true;
        }
        return false;
    }

    /// Calls every attached procedure on this thread, each with its own copy of the arguments.
    void operator()(A1 a1, A2 a2, A3 a3, A4 a4, A5 a5) {
        Locked locked(mutex);
        emitThreadId = CThread::getCurrentThreadID();
        for (int i = 0; i < maxSlots; ++i) {
            if (at(i).state != kAttached) continue;
            const Proc function = at(i).function;
            ++at(i).running;
            locked.leave();
            function(a1, a2, a3, a4, a5);
            locked.enter();
            at(i).cost = 0;
            --at(i).running;
        }
    }

private:
    enum State : int { kEmpty = 0, kAttached = 1 };

    struct Slot {
        Proc function;
        int state = kEmpty;
        uint8_t running = 0;  // calls in progress; more than 255 at once are out of range
        int cost = 0;

        bool isFree() const { return state == kEmpty && running == 0; }
        bool holds(const Proc& proc) const { return state == kAttached && function == proc; }
    };

    // Holds the mutex, also when a procedure throws.
    class Locked {
    public:
        explicit Locked(CMutex& toHold) : m_mutex(toHold) { enter(); }
        ~Locked() {
            if (m_held) m_mutex.leave();
        }
        Locked(const Locked&) = delete;
        Locked& operator=(const Locked&) = delete;
        void enter() {
            m_mutex.enter();
            m_held = true;
        }
        void leave() {
            m_held = false;
            m_mutex.leave();
        }

    private:
        CMutex& m_mutex;
        bool m_held = false;
    };

    Slot& at(int place) { return slots.get()[place]; }

    // A free slot at the position, the others moved whole; null if there is none.
    Slot* makeRoom(SlotPosition position) {
        if (position != any && position != back && position != front) return nullptr;
        const int step = position == back ? -1 : 1;
        const int start = position == back ? maxSlots - 1 : 0;
        int free = start;
        while (free >= 0 && free < maxSlots && !at(free).isFree())
            free += step;
        if (free < 0 || free >= maxSlots) return nullptr;
        if (position == any) return &at(free);
        // Contract: an emission under way keeps its place in the table, so it may skip or repeat a moved procedure.
        for (; free != start; free -= step)
            at(free) = at(free - step);
        return &at(start);
    }

    static void waitForCalls(const Slot& slot, Locked& locked) {
        while (slot.running != 0 && slot.state == kAttached) {
            locked.leave();
            CThread::sleep(10);
            locked.enter();
        }
    }

    const int maxSlots;
    int attachedCount = 0;
    std::unique_ptr<Slot[]> slots;
    CMutex mutex;
    int emitThreadId = -1;
};

}  // namespace Tovra::Fundo

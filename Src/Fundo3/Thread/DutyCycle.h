#pragma once

namespace Tovra::Fundo {

// The slots of a thread that is held back: so many to run and so many to sleep make a cycle.
struct ThreadLoadingControl {
    int m_runShare;
    int m_sleepShare;
    int m_runCount = 0;  // so far in this cycle
    int m_sleepCount = 0;
};

// Takes the next slot: the counters follow the straight line from (0, 0) to (m_runShare, m_sleepShare), so
// both kinds are spread evenly, and a cycle begins with a sleep. @return whether the thread runs in the slot
inline bool takeSlot(ThreadLoadingControl& control) {
    const bool runs = control.m_sleepCount * control.m_runShare > control.m_sleepShare * control.m_runCount;
    ++(runs ? control.m_runCount : control.m_sleepCount);
    if (control.m_runCount == control.m_runShare && control.m_sleepCount == control.m_sleepShare) {
        control.m_runCount = 0;
        control.m_sleepCount = 0;
    }
    return runs;
}

}  // namespace Tovra::Fundo

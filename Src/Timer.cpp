// The old timer. The current one calls delegates of an unsigned long; a method of a CObject takes an unsigned
// int, so a small adapter stands between them and narrows.
#include "Fundo/Timer.h"

#include <algorithm>
#include <atomic>
#include <climits>

#include "Fundo/Fundo3/Timer.h"

using Callback = Tovra::Fundo::TFunction1<void, unsigned long>;

namespace {

struct MethodAdapter {
    using Method = void (CObject::*)(unsigned int);

    void call(unsigned long param) { (m_object->*m_method)(static_cast<unsigned int>(param)); }

    CObject* m_object;
    Method m_method;
    MethodAdapter* m_next;
};

unsigned int toUnsigned(unsigned long ms) {
    return static_cast<unsigned int>(std::min(ms, static_cast<unsigned long>(UINT_MAX)));
}

// A callback on its way may still hold an adapter, whatever the timer has been started with since: each lives
// as long as the timer. They are only ever added, so looking for one takes no lock.
class MethodAdapters {
public:
    MethodAdapters() = default;
    MethodAdapters(const MethodAdapters&) = delete;
    MethodAdapters& operator=(const MethodAdapters&) = delete;
    ~MethodAdapters() {
        for (MethodAdapter* adapter = m_first; adapter != nullptr;) {
            MethodAdapter* next = adapter->m_next;
            delete adapter;
            adapter = next;
        }
    }

    MethodAdapter* get(CObject* object, MethodAdapter::Method method) {
        MethodAdapter* first = m_first.load(std::memory_order_acquire);
        for (MethodAdapter* adapter = first; adapter != nullptr; adapter = adapter->m_next) {
            if (adapter->m_object == object && adapter->m_method == method) return adapter;
        }
        auto* added = new MethodAdapter{object, method, first};
        while (!m_first.compare_exchange_weak(added->m_next, added, std::memory_order_acq_rel)) {
        }
        return added;
    }

private:
    std::atomic<MethodAdapter*> m_first{nullptr};
};

}  // namespace

struct CTimer::TimerInternal {
    explicit TimerInternal(const char* name) : m_timer(name) {}

    MethodAdapters m_adapters;
    // Last, so that it is destroyed, and its callback over, before what the callback uses.
    Tovra::Fundo::CTimer m_timer;
};

CTimer::CTimer(const char* name) : m_internal(new TimerInternal(name)) {}

CTimer::~CTimer() { delete m_internal; }

bool CTimer::Start(TFunction1<void, unsigned long> fun, unsigned long delay, unsigned long period,
                   unsigned long param, unsigned long timeout) {
    return m_internal->m_timer.start(fun, toUnsigned(delay), toUnsigned(period), param, toUnsigned(timeout));
}

bool CTimer::Start(CObject* object, void (CObject::*proc)(unsigned int), unsigned int delay,
                   unsigned int period, unsigned int param, unsigned int timeout) {
    const Callback callback(&MethodAdapter::call, m_internal->m_adapters.get(object, proc));
    return m_internal->m_timer.start(callback, delay, period, param, timeout);
}

bool CTimer::Stop(bool callNow) { return m_internal->m_timer.stop(callNow); }

bool CTimer::StopAndWait() { return m_internal->m_timer.stopAndWait(); }

bool CTimer::SetPeriodTime(unsigned long period) {
    return m_internal->m_timer.setPeriodTime(toUnsigned(period));
}

const char* CTimer::GetName() { return m_internal->m_timer.getName(); }

void CTimer::SetName(const char* name) { m_internal->m_timer.setName(name); }

bool CTimer::IsStarted() { return m_internal->m_timer.isStarted(); }

bool CTimer::IsCalled() { return m_internal->m_timer.isCalled(); }

bool CTimer::IsRunning() { return m_internal->m_timer.isRunning(); }

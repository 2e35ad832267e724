// From a record to a running body: stack size, policy and priority go into the attributes, the body itself
// sets up what only the thread can.

#include "Fundo3/Thread/ThreadStart.h"

#include <sched.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "Fundo3/Report.h"
#include "Fundo3/Thread/ThreadManagerInternal.h"
#include "Platform/ThreadId.h"
#include "Platform/ThreadName.h"

namespace Tovra::Fundo::Detail {

static constexpr char kSource[] = "Src/Fundo3/Thread";

// Lines of createThread(), which does its work here.
#define START_REPORT(level, ...) \
    FUNDO_REPORT_IF(             \
        level, reportObject(level, Site{kSource, "createThread", __LINE__}, record.m_owner, __VA_ARGS__))

bool StartError::set(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return false;
}

namespace {

constexpr int kRealTime = 1;
constexpr int kSmallestStack = 16384;

void setNice(const ThreadInternal& record) {
    const int nice = record.m_priority * 40 / 128 - 19;
    if (::setpriority(PRIO_PROCESS, 0, nice) == 0) return;
    const int error = errno;
    FUNDO_REPORT(kInfo, "ThreadBody name = %s, nice value %d refused, errno=%d\n", record.m_name.copy().text,
                 nice, error);
}

void* InternalThreadBody(void* argument) {
    ThreadInternal& record = *static_cast<ThreadInternal*>(argument);
    if (record.m_policy != kRealTime) setNice(record);
    Platform::setCurrentThreadName(record.m_name.copy().text);
    const int id = Platform::currentThreadId();
    record.m_mutex.enter();
    record.m_tid = id;
    record.m_mutex.leave();

    record.m_manager->addThread(&record);
    FUNDO_REPORT(kDebug, "ThreadBody Enter name = %s, id = %d, prior = %s%d, stack = %p \n",
                 record.m_name.copy().text, id, record.m_policy == kRealTime ? "R" : "N", record.m_priority,
                 static_cast<void*>(&argument));
    record.m_owner->threadProc();
    FUNDO_REPORT(kDebug, "ThreadBody leave name = %s, id = %d \n", record.m_name.copy().text, id);
    record.m_manager->removeThread(&record);

    record.m_loop = false;
    if (record.m_waitExit) record.m_exitSem.post();
    // The owner may free the record from here on.
    record.m_running = 0;
    return nullptr;
}

class Attributes {
public:
    explicit Attributes(StartError& error) : m_error(error) {}
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    ~Attributes() {
        if (m_made) ::pthread_attr_destroy(&m_attributes);
    }

    const pthread_attr_t* get() const { return &m_attributes; }

    bool make() {
        const int ret = ::pthread_attr_init(&m_attributes);
        m_made = ret == 0;
        return m_made || m_error.set("pthread attr init failed,errno=%d\n", ret);
    }

    bool setStackSize(const ThreadInternal& record) {
        size_t size = static_cast<size_t>(record.m_stackSize);
        if (size != 0 && size < kSmallestStack) {
            START_REPORT(kWarn, "too small stack size, StackSize=%zu, adjust to 16k\n", size);
            size = kSmallestStack;
        }
        if (size == 0 || !record.m_stackEnabled) return true;
        const int ret = ::pthread_attr_setstacksize(&m_attributes, size);
        START_REPORT(kInfo, "pthread attr set stack size, stk_sz=%zu\n", size);
        return ret == 0 ||
               m_error.set("pthread attr set stack size failed, stk_sz=%zu, errno=%d\n", size, ret);
    }

    bool setRealTime(int priority) {
        const int min = ::sched_get_priority_min(SCHED_FIFO);
        const int max = ::sched_get_priority_max(SCHED_FIFO);
        sched_param parameter{};
        parameter.sched_priority = max - ((max - min) * (priority - 1)) / 127;
        if (!setExplicit()) return false;
        int ret = ::pthread_attr_setschedpolicy(&m_attributes, SCHED_FIFO);
        if (ret != 0) return m_error.set("pthread attr set SCHED_FIFO failed, errno=%d\n", ret);
        ret = ::pthread_attr_setschedparam(&m_attributes, &parameter);
        return ret == 0 ||
               m_error.set("pthread attr pthread_attr_setschedparam(sched priority=%d) failed, errno=%d\n",
                           parameter.sched_priority, ret);
    }

    bool setNormal() {
        if (!setExplicit()) return false;
        // Unset, the parameter of a real-time starter would be taken, which this policy refuses.
        const sched_param parameter{};
        int ret = ::pthread_attr_setschedpolicy(&m_attributes, SCHED_OTHER);
        if (ret == 0) ret = ::pthread_attr_setschedparam(&m_attributes, &parameter);
        return ret == 0 ||
               m_error.set("pthread attr pthread_attr_setschedpolicy(SCHED_OTHER) failed, errno=%d\n", ret);
    }

    bool destroy() {
        m_made = false;
        const int ret = ::pthread_attr_destroy(&m_attributes);
        return ret == 0 || m_error.set("pthread attr destroy failed, errno=%d\n", ret);
    }

private:
    // A thread must not inherit the policy of the one that starts it.
    bool setExplicit() {
        const int ret = ::pthread_attr_setinheritsched(&m_attributes, PTHREAD_EXPLICIT_SCHED);
        return ret == 0 ||
               m_error.set("pthread attr setinheritsched PTHREAD_EXPLICIT_SCHED failed, errno=%d\n", ret);
    }

    pthread_attr_t m_attributes;
    bool m_made = false;
    StartError& m_error;
};

bool setPolicy(ThreadInternal& record, Attributes& attributes, bool& locked) {
    if (record.m_policy == kRealTime) return attributes.setRealTime(record.m_priority);
    if (record.m_policy != 0) {
        // Contract: a bad policy is tolerated, and the rest of the start runs without the lock.
        record.m_mutex.leave();
        locked = false;
        START_REPORT(kWarn, "CThread::CreateThread policy isn't set properly, policy = %d", record.m_policy);
    }
    return attributes.setNormal();
}

bool makeThread(ThreadInternal& record, const pthread_attr_t* attributes, StartError& error) {
    // Stored before the body can end: stored later it might outlast the body, and the destructor would
    // wait for ever.
    record.m_running = 1;
    int ret = ::pthread_create(&record.m_id, attributes, InternalThreadBody, &record);
    if (ret != 0) {
        record.m_running = 0;
        return error.set("pthread create failed, errno=%d\n", ret);
    }
    ret = ::pthread_detach(record.m_id);
    record.m_joinable = ret != 0;
    return ret == 0 || error.set("pthread detach failed, errno=%d\n", ret);
}

}  // namespace

bool startThread(ThreadInternal& record, bool& locked, StartError& error) {
    if (record.m_stackSize < 0) return error.set("invalid stack size, StackSize=%d\n", record.m_stackSize);
    Attributes attributes(error);
    return attributes.make() && attributes.setStackSize(record) && setPolicy(record, attributes, locked) &&
           makeThread(record, attributes.get(), error) && attributes.destroy();
}

}  // namespace Tovra::Fundo::Detail

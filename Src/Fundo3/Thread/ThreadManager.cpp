#include "Fundo/Fundo3/ThreadManager.h"

#include <cstdio>
#include <vector>

#include "Fundo/Fundo3/Time.h"
#include "Fundo3/Report.h"
#include "Fundo3/Thread/ThreadManagerInternal.h"
#include "Fundo3/Version/LibraryVersion.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Thread";

namespace {

struct Row {
    Row(const char* name, int id, int priority, bool late) {
        std::snprintf(text, sizeof text, "%24s   %8d  %3d  %s\n", name, id, priority,
                      late ? "Timeout" : "Normal");
    }

    char text[127];
};

}  // namespace

FUNDO_DEFINE_LASTING_INSTANCE(ThreadManagerInternal)

ThreadManagerInternal::ThreadManagerInternal() {
    FUNDO_REPORT_THIS(Detail::kTrace, "CThreadManager::CThreadManager()>>>>>>>>>\n");
    Detail::libraryVersion().print();
}

void ThreadManagerInternal::addThread(ThreadInternal* thread) {
    m_mutex.enter();
    m_threads.pushFront(thread);
    m_mutex.leave();
}

void ThreadManagerInternal::removeThread(ThreadInternal* thread) {
    m_mutex.enter();
    m_threads.remove(thread);
    m_mutex.leave();
}

ThreadInternal* ThreadManagerInternal::find(int id) const {
    ThreadInternal* thread = m_threads.head();
    while (thread != nullptr && thread->m_tid != id)
        thread = thread->m_next;
    return thread;
}

ThreadInternal* ThreadManagerInternal::getThread(int id) {
    m_mutex.enter();
    ThreadInternal* thread = find(id);
    m_mutex.leave();
    return thread;
}

bool ThreadManagerInternal::copyThreadName(int id, Detail::SharedName::Copy& name) {
    m_mutex.enter();
    const ThreadInternal* thread = find(id);
    if (thread != nullptr) name = thread->m_name.copy();
    m_mutex.leave();
    return thread != nullptr;
}

bool ThreadManagerInternal::getTimeOutThreads(std::string& names) {
    m_mutex.enter();
    names.clear();
    const uint64_t now = CTime::getCurrentMilliSecond();
    for (ThreadInternal* thread = m_threads.head(); thread != nullptr; thread = thread->m_next) {
        thread->m_mutex.enter();
        if (thread->isLate(now)) {
            // Contract: six characters, so an id of five digits loses its closing parenthesis.
            char id[7];
            std::snprintf(id, sizeof id, "(%d)", static_cast<int>(thread->m_tid));
            names.append(thread->m_name.copy().text).append(id);
        }
        thread->m_mutex.leave();
    }
    m_mutex.leave();
    return !names.empty();
}

void ThreadManagerInternal::registerMainThread() { m_mainThreadId = CThread::getCurrentThreadID(); }

// The rows are logged without the lock, so that a print procedure may use threads.
void ThreadManagerInternal::dumpThreads() {
    std::vector<Row> rows;
    m_mutex.enter();
    const uint64_t now = CTime::getCurrentMilliSecond();
    for (const ThreadInternal* thread = m_threads.head(); thread != nullptr; thread = thread->m_next)
        rows.emplace_back(thread->m_name.copy().text, thread->m_tid, thread->m_priority, thread->isLate(now));
    m_mutex.leave();

    FUNDO_REPORT(Detail::kInfo, "Threads:\n");
    FUNDO_REPORT(Detail::kInfo, "               Name            TID  Prior State\n");
    FUNDO_REPORT(Detail::kInfo, "_______________________________________________________\n");
    FUNDO_REPORT(Detail::kInfo, "%s", Row("Main", m_mainThreadId, 64, false).text);
    for (const Row& row : rows)
        FUNDO_REPORT(Detail::kInfo, "%s", row.text);
    FUNDO_REPORT(Detail::kInfo, "\n");
}

FUNDO_DEFINE_LASTING_INSTANCE(CThreadManager)

CThreadManager::CThreadManager() : m_internal(ThreadManagerInternal::instance()) {}

void CThreadManager::registerMainThread() { m_internal->registerMainThread(); }

void CThreadManager::dumpThreads() { m_internal->dumpThreads(); }

bool CThreadManager::getThreadNameByID(int id, CString& name) {
    Detail::SharedName::Copy copy;
    if (!m_internal->copyThreadName(id, copy)) return false;
    name = copy.text;
    return true;
}

bool CThreadManager::getTimeOutThreads(std::string& names) { return m_internal->getTimeOutThreads(names); }

bool CThreadManager::hasThread(int id) { return m_internal->getThread(id) != nullptr; }

}  // namespace Tovra::Fundo

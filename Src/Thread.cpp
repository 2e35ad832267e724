#include "Fundo/Thread.h"

#include <algorithm>
#include <climits>

#include "Fundo/Fundo3/Detail/PlatformAssert.h"

static constexpr char kSource[] = "Src/Thread";

namespace {

int toInt(unsigned long ms) { return static_cast<int>(std::min(ms, static_cast<unsigned long>(INT_MAX))); }

}  // namespace

CThreadDrived::CThreadDrived(::CThread* owner, const char* name, int priority, int policy, int stackSize)
    : Tovra::Fundo::CThread(name, priority, policy, stackSize), m_owner(owner) {
    FUNDO_PLATFORM_ASSERT(m_owner != NULL, kSource);
}

void CThreadDrived::threadProc() { m_owner->ThreadProc(); }

CThread::CThread(const char* name, int priority, int policy, int stackSize)
    : m_internal(new CThreadDrived(this, name, priority, policy, stackSize)) {}

CThread::~CThread() { delete m_internal; }

void CThread::SetThreadName(const char* name) { m_internal->setThreadName(name); }

bool CThread::CreateThread() { return m_internal->createThread(); }

bool CThread::DestroyThread() { return m_internal->destroyThread(); }

bool CThread::CancelThread() { return m_internal->cancelThread(); }

bool CThread::TerminateThread() { return m_internal->terminateThread(); }

bool CThread::IsThreadOver() { return m_internal->isThreadOver(); }

int CThread::GetThreadID() { return m_internal->getThreadID(); }

int CThread::ShareSocket(int socket) { return m_internal->shareSocket(socket); }

void CThread::SetTimeout(unsigned long ms) { m_internal->setTimeout(toInt(ms)); }

void CThread::setTimeout(int ms, unsigned long long now) { m_internal->setTimeout(ms, now); }

bool CThread::IsTimeout() { return m_internal->isTimeout(); }

bool CThread::looping() const { return m_internal->looping(); }

int CThread::GetCurrentThreadID() { return Tovra::Fundo::CThread::getCurrentThreadID(); }

bool CThread::SetCurrentTimeout(unsigned long ms) {
    return Tovra::Fundo::CThread::setCurrentTimeout(toInt(ms));
}

int ThreadBody(void*) { return 0; }

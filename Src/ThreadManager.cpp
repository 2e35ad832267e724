#include "Fundo/ThreadManager.h"

#include "Fundo/Fundo3/ThreadManager.h"
#include "Fundo/PrintLog.h"
#include "Fundo3/Instance.h"

using Current = Tovra::Fundo::CThreadManager;

static constexpr char kSource[] = "Src/ThreadManager";

IThreadManager::~IThreadManager() = default;

IThreadManager* IThreadManager::instance() { return CThreadManager::instance(); }

FUNDO_DEFINE_LASTING_INSTANCE(CThreadManager)

CThreadManager::CThreadManager() { logTrace("CThreadManager::CThreadManager()>>>>>>>>>\n"); }

void CThreadManager::RegisterMainThread() { Current::instance()->registerMainThread(); }

void CThreadManager::DumpThreads() { Current::instance()->dumpThreads(); }

bool CThreadManager::GetTimeOutThreads(std::string& names) {
    return Current::instance()->getTimeOutThreads(names);
}

#include "Fundo/TimerManager.h"

#include "Fundo/Fundo3/TimerManager.h"
#include "Fundo3/Instance.h"

static constexpr char kSource[] = "Src/TimerManager";

ITimerManager::~ITimerManager() = default;

ITimerManager* ITimerManager::instance() { return CTimerManager::instance(); }

FUNDO_DEFINE_LASTING_INSTANCE(CTimerManager)

void CTimerManager::DumpTimers() { Tovra::Fundo::CTimerManager::instance()->dumpTimers(); }

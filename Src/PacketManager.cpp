#include "Fundo/PacketManager.h"

#include "Fundo3/Instance.h"
#include "HeaderSize.h"
#include "Memory/PacketManager.h"

using Current = Tovra::Memory::CPacketManager;

static constexpr char kSource[] = "Src/PacketManager";

IPacketManager::~IPacketManager() = default;

IPacketManager* IPacketManager::instance() { return CPacketManager::instance(); }

void IPacketManager::config(int totalSize, int chunkSize, int headerSize) {
    s_headerSize = headerSize;
    Current::PoolParameter parameter{static_cast<size_t>(totalSize), static_cast<size_t>(chunkSize), 4};
    Current::config(Current::PolicyPoolData, nullptr, &parameter);
}

FUNDO_DEFINE_LASTING_INSTANCE(CPacketManager)

unsigned long CPacketManager::GetBufferSize() { return Current::instance()->getBufferSize(); }

unsigned long CPacketManager::GetFreeSize() { return Current::instance()->getFreeSize(); }

void CPacketManager::DumpNodes() { Current::instance()->dumpNodes(); }

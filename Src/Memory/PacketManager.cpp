#include "Memory/PacketManager.h"

#include <atomic>

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Report.h"
#include "Memory/Arithmetic.h"
#include "Memory/PacketManagerInternal.h"

namespace Tovra::Memory {

static constexpr char kSource[] = "Src/Memory/PacketManager";

namespace {

// What the application chose; the manager copies it when it is built.
struct Configuration {
    CPacketManager::Policy policy = CPacketManager::PolicySystem;
    CPacketManager::PoolParameter param;
    CPacketManager::MemoryOperator memop;
    std::atomic<bool> frozen{false};
};

// Built on first use: a static initialiser of the application may come before those of the library.
Configuration& configuration() {
    static Fundo::Detail::Immortal<Configuration> s_configuration;
    return *s_configuration;
}

}  // namespace

FUNDO_DEFINE_LASTING_INSTANCE(PacketManagerInternal)

void PacketManagerInternal::config(CPacketManager::Policy policy, CPacketManager::MemoryOperator* memop,
                                   CPacketManager::PoolParameter* param) {
    static constexpr char kFunction[] =
        "static void Tovra::Memory::PacketManagerInternal::config(CPacketManager::Policy, "
        "CPacketManager::MemoryOperator *, CPacketManager::PoolParameter *)";
    Configuration& current = configuration();
    if (current.frozen) {
        FUNDO_REPORT_STATIC(
            Fundo::Detail::kWarn,
            "PacketManagerInternal::config() failured: Packet Manager has been configured!\n");
        return;
    }
    if (policy != 0) current.policy = policy;
    if (param != nullptr) {
        FUNDO_ASSERT_IN(
            param->chunkSize >= 1024 && param->chunkSize > 0 && param->totalSize % param->chunkSize == 0,
            kFunction);
        FUNDO_ASSERT_IN(param->alignSize >= 4, kFunction);
        current.param = *param;
    }
    if (memop != nullptr) {
        FUNDO_ASSERT_IN(!memop->malloc.empty() && !memop->free.empty() && !memop->memcpy.empty(), kFunction);
        current.memop = *memop;
    }
}

PacketManagerInternal::PacketManagerInternal() {
    Configuration& chosen = configuration();
    chosen.frozen = true;
    sm_existing = this;
    m_policy = chosen.policy;
    m_memop = chosen.memop;
    m_plainCopy = m_memop.memcpy == CPacketManager::MemoryOperator().memcpy;
    m_alignSize = size_t{1} << floorLog2(chosen.param.alignSize);
    m_served = m_policy == CPacketManager::PolicyPool || m_policy == CPacketManager::PolicyPoolData;
    if (m_policy == CPacketManager::PolicySystem) {
        Fundo::logInfo("CPacketManager: System Policy\n");
    } else if (m_policy != CPacketManager::PolicyNoPool) {
        m_pool = std::make_unique<BuddyPool>(chosen.param, m_memop);
    }
}

void PacketManagerInternal::atExit() {
    if (m_pool != nullptr) m_pool->close();
}

// Under a pool, the operator's copy may know the pool's memory alone.
void* PacketManagerInternal::copyByOperator(void* dst, const void* src, size_t n) {
    if (m_served && !(m_pool->holds(dst) && m_pool->holds(src))) return std::memcpy(dst, src, n);
    return m_memop.memcpy(dst, src, n);
}

// Contract: the policy with data in the pool prints the system's line, although the pool has lists to show.
void PacketManagerInternal::dumpNodes() {
    if (m_policy == CPacketManager::PolicySystem || m_policy == CPacketManager::PolicyPoolData) {
        Fundo::logInfo("CPacketManager dump: SYS Policy\n");
    } else if (m_pool != nullptr) {
        Fundo::logInfo("CPacketManager: dump FreeList\n");
        m_pool->printNodeInfo();
    }
}

FUNDO_DEFINE_LASTING_INSTANCE(CPacketManager)

CPacketManager::CPacketManager() : m_internal(PacketManagerInternal::instance()) {}

void CPacketManager::config(Policy policy, MemoryOperator* memop, PoolParameter* param) {
    PacketManagerInternal::config(policy, memop, param);
}

void* CPacketManager::getPoolBuffer() { return PacketManagerInternal::instance()->poolBuffer(); }

void* CPacketManager::malloc(size_t size) { return m_internal->malloc(&size); }

void CPacketManager::free(void* pointer) { m_internal->free(pointer); }

void* CPacketManager::memcpy(void* dst, const void* src, size_t n) { return m_internal->memcpy(dst, src, n); }

size_t CPacketManager::getBufferSize() { return m_internal->getBufferSize(); }

size_t CPacketManager::getFreeSize() { return m_internal->getFreeSize(); }

void CPacketManager::dumpNodes() { m_internal->dumpNodes(); }

}  // namespace Tovra::Memory

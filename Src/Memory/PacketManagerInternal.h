#pragma once

#include <cstddef>
#include <cstring>
#include <memory>

#include "Fundo3/Instance.h"
#include "Memory/BuddyPool.h"
#include "Memory/PacketManager.h"

namespace Tovra::Memory {

// The memory of all packets, under the configuration that its construction froze. Everything but the pool's
// lists is constant from then on, so nothing here locks.
//
// At exit the region goes back to the operator, but the object stays: a packet of the system policy can be
// released later, and a thread still running finds a pool without free space.
class PacketManagerInternal {
public:
    static PacketManagerInternal* instance();
    // The same where a packet is at hand, which nobody has before the manager.
    static PacketManagerInternal& existing() { return *sm_existing; }
    static void config(CPacketManager::Policy policy, CPacketManager::MemoryOperator* memop,
                       CPacketManager::PoolParameter* param);
    void atExit();

    CPacketManager::Policy policy() const { return m_policy; }
    size_t alignSize() const { return m_alignSize; }
    void* poolBuffer() const { return m_pool == nullptr ? nullptr : m_pool->origin(); }

    // Makes *size the size really granted.
    void* malloc(size_t* size) { return m_served ? m_pool->malloc(size) : m_memop.malloc(*size); }
    void free(void* pointer) { m_served ? m_pool->free(pointer) : m_memop.free(pointer); }
    void* memcpy(void* dst, const void* src, size_t n) {
        return m_plainCopy ? std::memcpy(dst, src, n) : copyByOperator(dst, src, n);
    }

    size_t getBufferSize() const { return m_served ? m_pool->size() : 0; }
    size_t getFreeSize() { return m_served ? m_pool->freeSize() : 0; }
    void dumpNodes();

private:
    friend class Fundo::Detail::Instance<PacketManagerInternal, true>;
    PacketManagerInternal();
    void* copyByOperator(void* dst, const void* src, size_t n);

    static inline PacketManagerInternal* sm_existing = nullptr;

    CPacketManager::Policy m_policy;
    CPacketManager::MemoryOperator m_memop;
    size_t m_alignSize;  // a power of two
    bool m_served;       // by the pool; a pool that serves nobody is built for unknown policies
    bool m_plainCopy;    // the operator's copy is the system's
    std::unique_ptr<BuddyPool> m_pool;
};

}  // namespace Tovra::Memory

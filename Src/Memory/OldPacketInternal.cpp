#include "Memory/OldPacketInternal.h"

#include <algorithm>
#include <cstdlib>

#include "Fundo3/Report.h"
#include "Memory/PacketManagerInternal.h"

namespace Tovra::Memory {

static constexpr char kSource[] = "Src/Memory/Packet";

void OldPacketInternal::setLate(const Deleter& deleter, void* arg) {
    m_lateBuffer = true;
    m_deleter = deleter;
    m_lateArg = arg;
}

// A parent is released behind this body.
OldPacketInternal::~OldPacketInternal() {
    if (m_lateBuffer) std::free(m_extraData);
    if (m_deleter.empty()) return;
    // Contract: the late deleter hears the capacity that was promised, the other one the size in use.
    if (!m_lateBuffer) {
        m_deleter(m_buffer, m_size);
    } else if (m_buffer != nullptr) {
        m_deleter(m_lateArg, m_capacity);
    }
}

void OldPacketInternal::destroy() {
    void* const extra = m_extraData;
    if (m_lateBuffer) {
        delete this;
        return;
    }
    switch (m_kind) {
        case Kind::own:
            destroyOwn();
            return;
        case Kind::sub:
            this->~OldPacketInternal();
            std::free(extra);
            return;
        case Kind::callers:
            delete this;
            std::free(extra);
            return;
    }
    Fundo::Detail::assertionFailedMsg("0", "PacketInternal::destroy(): unreachable!\n",
                                      "virtual void Tovra::Memory::OldPacketInternal::destroy()", kSource,
                                      __LINE__);
}

void OldPacketInternal::destroyOwn() {
    PacketManagerInternal& manager = PacketManagerInternal::existing();
    void* const buffer = m_buffer;
    void* const extra = m_extraData;
    this->~OldPacketInternal();
    if (manager.policy() == CPacketManager::PolicyPoolData) {
        if (buffer != nullptr) manager.free(buffer);
        std::free(extra);
    } else {
        manager.free(buffer);
    }
}

size_t OldPacketInternal::putBuffer(void* data, size_t size) {
    if (m_lateBuffer) {
        m_buffer = data;
        m_size = static_cast<uint32_t>(size);
        return size;
    }
    // Contract: sizes have 32 bits here too.
    const uint32_t taken = std::min(static_cast<uint32_t>(size), m_capacity - m_size);
    if (taken == 0) return 0;
    void* const end = static_cast<unsigned char*>(m_buffer) + m_size;
    m_size += taken;
    PacketManagerInternal::existing().memcpy(end, data, taken);
    return taken;
}

bool OldPacketInternal::resize(size_t size) {
    if (size > m_capacity) return false;
    m_size = static_cast<uint32_t>(size);
    return true;
}

}  // namespace Tovra::Memory

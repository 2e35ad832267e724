#include "Memory/OldPacketInternal.h"

#include <algorithm>
#include <cstdlib>

#include "Fundo3/Report.h"
#include "Memory/PacketManagerInternal.h"

namespace Tovra::Memory {

static constexpr char kSource[] = "Src/Memory/Packet";

OldPacketInternal::OldPacketInternal(Kind kind, const Bytes& bytes, const Extra& extra)
    : m_buffer(bytes.data),
      m_size(static_cast<uint32_t>(bytes.size)),
      m_capacity(static_cast<uint32_t>(bytes.capacity)),
      m_extraData(extra.data),
      // Contract: one byte for the size, whatever the area has.
      m_extraSize(static_cast<uint8_t>(extra.size)),
      m_kind(kind) {}

void OldPacketInternal::setLate(const Deleter& deleter, void* arg) {
    m_lateBuffer = true;
    m_lateDeleter = deleter;
    m_lateArg = arg;
}

// A parent is released behind this body.
OldPacketInternal::~OldPacketInternal() {
    if (m_lateBuffer) {
        std::free(m_extraData);
        // Contract: the late deleter hears the capacity that was promised, the other one the size in use.
        if (m_buffer != nullptr && !m_lateDeleter.empty()) m_lateDeleter(m_lateArg, m_capacity);
    } else if (m_kind == Kind::callers && !m_deleter.empty()) {
        m_deleter(m_buffer, m_size);
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
    PacketManagerInternal& manager = *PacketManagerInternal::instance();
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
    PacketManagerInternal::instance()->memcpy(static_cast<unsigned char*>(m_buffer) + m_size, data, taken);
    m_size += taken;
    return taken;
}

bool OldPacketInternal::resize(size_t size) {
    if (size > m_capacity) return false;
    m_size = static_cast<uint32_t>(size);
    return true;
}

}  // namespace Tovra::Memory

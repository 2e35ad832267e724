#include "Memory/Packet.h"

namespace Tovra::Memory {

CPacket::CPacket(size_t size, size_t ext) : m_internal(PacketInternal::create(size, ext)) {}

CPacket::CPacket(void* buffer, size_t size, Deleter deleter)
    : m_internal(PacketInternal::create(buffer, size, deleter)) {}

CPacket::CPacket(void* buffer, size_t size, size_t ext, Deleter deleter)
    : m_internal(PacketInternal::create(buffer, size, ext, deleter)) {}

CPacket::CPacket(unsigned int size, Deleter deleter, void* arg, size_t ext)
    : m_internal(PacketInternal::create(size, deleter, arg, ext)) {}

CPacket::CPacket(const CPacket& parent, size_t offset, size_t size, size_t ext)
    : m_internal(PacketInternal::create(parent, offset, size, ext)) {}

}  // namespace Tovra::Memory

#include "Fundo/Packet.h"

#include <cstring>

#include "HeaderSize.h"

namespace {

size_t headerSize() { return static_cast<size_t>(s_headerSize.load(std::memory_order_relaxed)); }

}  // namespace

CPacket::CPacket(unsigned long size) : m_packet(size, headerSize()) {}

CPacket::CPacket(unsigned int size, Deleter deleter, void* argument)
    : m_packet(size, deleter, argument, headerSize()) {}

void CPacket::ClearHeader() {
    if (void* header = GetHeader()) std::memset(header, 0, GetHeaderSize());
}

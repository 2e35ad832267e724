#pragma once

#include <cstddef>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"
#include "Memory/Packet.h"

/// Tovra::Memory::CPacket under its old names, with a header on each packet: an extra area of 128 bytes, or
/// of the size that IPacketManager::config() has set. Copies share the packet; every operation of an empty
/// handle gives 0 and does nothing. Threads as told there.
class FUNDO_API CPacket {
public:
    /// Gives bytes back: told the caller's argument and how many bytes there are.
    using Deleter = Tovra::Fundo::TFunction2<void, void*, unsigned long>;

    /// An empty handle.
    CPacket() = default;
    /// A packet with bytes of its own, all in use at once. It is empty if memory is short, which is logged.
    explicit CPacket(unsigned long size);
    /// A packet of size bytes that PutBuffer() brings later; deleter(argument, capacity) gives them back.
    CPacket(unsigned int size, Deleter deleter, void* argument);
    /// Shares a packet of the current class; an empty one gives an empty handle.
    CPacket(const Tovra::Memory::CPacket& packet) : m_packet(packet) {}

    /// A current handle of the same packet; an empty one if there is none.
    operator Tovra::Memory::CPacket() const { return m_packet; }

    /// Bytes there is room for.
    unsigned long GetSize() const { return m_packet.capacity(); }
    /// Appends bytes behind those in use, as many as fit. @return the bytes taken
    unsigned long PutBuffer(void* data, unsigned long size) { return m_packet.putBuffer(data, size); }
    /// The first byte.
    void* GetBuffer() const { return m_packet.getBuffer(); }
    /// Sets the bytes in use. @return false if there is less room
    bool SetLength(unsigned long length) { return m_packet.resize(length); }
    /// Bytes in use.
    unsigned long GetLength() const { return m_packet.size(); }
    /// Bytes of room that are not in use.
    unsigned long GetLeft() const { return m_packet.capacity() - m_packet.size(); }
    /// The header; null if it has no bytes.
    void* GetHeader() const { return m_packet.getExtraData(); }
    /// Bytes of the header.
    unsigned long GetHeaderSize() const { return m_packet.getExtraSize(); }
    /// Fills the header with zeros.
    void ClearHeader();

private:
    // A member, not a pointer to one: copying a handle must not cost an allocation.
    Tovra::Memory::CPacket m_packet;
};

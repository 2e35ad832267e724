#pragma once

#include <cstddef>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"
#include "Memory/Detail/PacketInternal.h"

namespace Tovra::Memory {

/// A handle of a reference-counted byte buffer with a small extra area for the caller's own use. Copying a
/// handle shares the packet; the bytes stay where they are and belong to the last handle.
///
///   form          bytes                                   at the end
///   own           from the pool or the heap, by the       go back there
///                 policy of CPacketManager
///   caller's      given to the constructor                deleter(buffer, size())
///   late-buffer   given later to putBuffer()              deleter(arg, capacity()), if any were given
///   sub-packet    a part of the parent's, shared          the parent loses a reference
///
/// Sizes have 32 bits. An extra area belongs to the packet and starts uninitialised; it must be under 256
/// bytes, since its size is kept in one byte: beyond, getExtraSize() tells the size modulo 256.
///
/// A constructor that fails gives an empty handle and logs; nothing throws. On an empty handle every
/// operation gives 0, null or false.
///
/// Handles of one packet may be copied, assigned and dropped on any threads, one thread a handle; the deleter
/// runs on the thread that drops the last. The bytes and the size have no lock. A deleter may be empty: the
/// bytes then stay the caller's.
class FUNDO_API CPacket {
public:
    /// Gives bytes back: told where they are, or the caller's own argument, and how many there are.
    using Deleter = Fundo::TFunction2<void, void*, unsigned long>;

    /// An empty handle.
    CPacket() = default;

    /// A packet with bytes of its own, not initialised, all in use at once; the capacity may be larger. When
    /// memory is short, "PacketInternal::create(): NO enough, need size(%zu) ext(%zu)\n" is logged at
    /// level 4.
    CPacket(size_t size, size_t ext);

    /// Wraps the caller's bytes.
    CPacket(void* buffer, size_t size, Deleter deleter);

    /// Wraps the caller's bytes and adds an extra area.
    CPacket(void* buffer, size_t size, size_t ext, Deleter deleter);

    /// A late-buffer packet: size bytes are promised, putBuffer() brings them.
    CPacket(unsigned int size, Deleter deleter, void* arg, size_t ext);

    /// A view of size bytes at an offset of the parent, which it keeps alive; capacity() is size. The offset
    /// must be below the parent's size, and the view must end within it: else "PacketInternal::create()
    /// offset or size is invalid!! huge_size(%zu), offset(%zu), size(%zu)\n" is logged at level 3.
    CPacket(const CPacket& parent, size_t offset, size_t size, size_t ext);

    /// Shares the packet.
    CPacket(const CPacket& other) : m_internal(other.m_internal) {
        if (m_internal != nullptr) m_internal->addRef();
    }

    /// Shares the other packet and drops the present one.
    CPacket& operator=(const CPacket& other) {
        if (m_internal == other.m_internal) return *this;
        if (other.m_internal != nullptr) other.m_internal->addRef();
        replace(other.m_internal);
        return *this;
    }

    /// Drops the reference.
    virtual ~CPacket() {
        if (m_internal != nullptr) m_internal->release();
    }

    /// Bytes in use.
    size_t size() const { return m_internal == nullptr ? 0 : m_internal->size(); }
    /// Bytes there is room for.
    size_t capacity() const { return m_internal == nullptr ? 0 : m_internal->capacity(); }
    /// The first byte; null for a late-buffer packet that was given none.
    void* getBuffer() const { return m_internal == nullptr ? nullptr : m_internal->getBuffer(); }

    /// Appends bytes behind those in use, as many as fit; a new packet of its own is full, so resize(0) comes
    /// first. A late-buffer packet takes over the pointer instead and copies nothing; a pointer given before
    /// is forgotten without a call of the deleter. The bytes must not lie where they go. @return the bytes
    /// taken
    size_t putBuffer(void* data, size_t size) {
        return m_internal == nullptr ? 0 : m_internal->putBuffer(data, size);
    }

    /// Sets the bytes in use; moves and clears nothing. @return false if the capacity is less
    bool resize(size_t size) { return m_internal != nullptr && m_internal->resize(size); }

    /// The extra area; null if getExtraSize() is 0.
    void* getExtraData() const { return m_internal == nullptr ? nullptr : m_internal->getExtraData(); }
    /// Bytes of the extra area, modulo 256.
    size_t getExtraSize() const { return m_internal == nullptr ? 0 : m_internal->getExtraSize(); }

    /// Drops the reference and empties the handle.
    void reset() { replace(nullptr); }
    /// Whether the handle holds a packet.
    bool valid() const { return m_internal != nullptr; }

private:
    // The old packet's deleter may use this handle.
    void replace(PacketInternal* internal) {
        PacketInternal* old = m_internal;
        m_internal = internal;
        if (old != nullptr) old->release();
    }

    PacketInternal* m_internal = nullptr;
};

}  // namespace Tovra::Memory

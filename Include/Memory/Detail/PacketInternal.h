#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"

namespace Tovra::Memory {

class CPacket;

/// What a CPacket is a handle of; users go through the handle. The count stands here, in the open, so that
/// copying and dropping a handle is one atomic operation without a call.
class FUNDO_API PacketInternal {
public:
    /// See CPacket::Deleter.
    using Deleter = Fundo::TFunction2<void, void*, unsigned long>;

    /// @name Makers of the five forms
    /// One for each constructor of CPacket, with one reference, or null.
    /// @{
    static PacketInternal* create(size_t size, size_t ext);
    static PacketInternal* create(size_t size, const Deleter& deleter, void* arg, size_t ext);
    static PacketInternal* create(const CPacket& parent, size_t offset, size_t size, size_t ext);
    static PacketInternal* create(void* buffer, size_t size, const Deleter& deleter);
    static PacketInternal* create(void* buffer, size_t size, size_t ext, const Deleter& deleter);
    /// @}

    PacketInternal(const PacketInternal&) = delete;
    PacketInternal& operator=(const PacketInternal&) = delete;

    /// Ends the packet; release() calls it.
    virtual void destroy() = 0;
    /// One reference more.
    void addRef() { m_refCount.fetch_add(1, std::memory_order_relaxed); }
    /// One reference less; the last one ends the packet. A release too many is not caught.
    void release() {
        // Nobody but the owner of the only reference can add one, so that one goes without an atomic write.
        const bool only = m_refCount.load(std::memory_order_acquire) == 1;
        if (only || m_refCount.fetch_sub(1, std::memory_order_acq_rel) == 1) destroy();
    }
    /// See CPacket::putBuffer().
    virtual size_t putBuffer(void* data, size_t size) = 0;
    /// See CPacket::getBuffer().
    virtual void* getBuffer() const = 0;
    /// See CPacket::size().
    virtual size_t size() const = 0;
    /// See CPacket::resize().
    virtual bool resize(size_t size) = 0;
    /// See CPacket::capacity().
    virtual size_t capacity() const = 0;
    /// See CPacket::getExtraData().
    virtual void* getExtraData() const = 0;
    /// See CPacket::getExtraSize().
    virtual size_t getExtraSize() const = 0;

protected:
    PacketInternal() = default;
    ~PacketInternal() = default;

private:
    std::atomic<uint32_t> m_refCount{1};
};

}  // namespace Tovra::Memory

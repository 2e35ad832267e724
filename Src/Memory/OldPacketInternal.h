#pragma once

#include <cstddef>
#include <cstdint>

#include "Memory/Detail/PacketInternal.h"
#include "Memory/Packet.h"

namespace Tovra::Memory {

// The record of a packet. Where memory comes as one block, the record stands at its end, behind the extra
// area: the block's start, which the allocator knows, is the data's start too.
//
//      | data: capacity | extra area: ext and more | record |
//                       |<--- tail: ext + kRecordSize, rounded up to the alignment --->|
//
//   form                 data                   extra area and record
//   own, one block       block, from its start  the block's tail
//   own, data in pool    a block of the pool    a heap block of the tail's size
//   sub-packet           the parent's           a heap block of the tail's size
//   caller's, late       the caller's           a heap block for each, the extra area's if there is one
class OldPacketInternal final : public PacketInternal {
public:
    enum class Kind : uint8_t { own = 0, sub = 1, callers = 2 };

    struct Bytes {
        void* data;
        size_t size;
        size_t capacity;
    };
    struct Extra {
        void* data;
        size_t size;
    };

    OldPacketInternal(Kind kind, const Bytes& bytes, const Extra& extra)
        : m_buffer(bytes.data),
          m_size(static_cast<uint32_t>(bytes.size)),
          m_capacity(static_cast<uint32_t>(bytes.capacity)),
          m_extraData(extra.data),
          // Contract: one byte for the size, whatever the area has.
          m_extraSize(static_cast<uint8_t>(extra.size)),
          m_kind(kind) {}
    // A sub-packet.
    OldPacketInternal(const CPacket& parent, const Bytes& bytes, const Extra& extra)
        : OldPacketInternal(Kind::sub, bytes, extra) {
        m_parent = parent;
    }
    ~OldPacketInternal();

    void setDeleter(const Deleter& deleter) { m_deleter = deleter; }
    void setLate(const Deleter& deleter, void* arg);

    void destroy() override;
    size_t putBuffer(void* data, size_t size) override;
    void* getBuffer() const override { return m_buffer; }
    size_t size() const override { return m_size; }
    bool resize(size_t size) override;
    size_t capacity() const override { return m_capacity; }
    void* getExtraData() const override { return m_extraSize == 0 ? nullptr : m_extraData; }
    size_t getExtraSize() const override { return m_extraSize; }

private:
    void destroyOwn();

    void* m_buffer;
    uint32_t m_size;
    uint32_t m_capacity;
    void* m_extraData;
    uint8_t m_extraSize;
    Kind m_kind;
    bool m_lateBuffer = false;
    CPacket m_parent;   // of a sub-packet
    Deleter m_deleter;  // of a caller's or late buffer
    void* m_lateArg = nullptr;
};

// What a tail reserves for the record. Blocks end at multiples of the configured alignment, which may be less
// than the record's own, so there is slack to move it in.
constexpr size_t kRecordSize = sizeof(OldPacketInternal) + alignof(OldPacketInternal);

}  // namespace Tovra::Memory

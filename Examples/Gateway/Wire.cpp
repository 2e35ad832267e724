#include "Wire.h"

namespace {

void put(uint8_t* bytes, size_t count, uint32_t value) {
    for (size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<uint8_t>(value >> (8 * (count - 1 - i)));
}

uint32_t take(const uint8_t* bytes, size_t count) {
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i)
        value = value << 8 | bytes[i];
    return value;
}

}  // namespace

void encode(const FrameHead& head, uint8_t* bytes) {
    put(bytes, 4, head.length);
    bytes[4] = static_cast<uint8_t>(head.kind);
    bytes[5] = head.connection;
    put(bytes + 6, 2, head.channel);
    put(bytes + 8, 4, head.sequence);
    put(bytes + 12, 4, head.crc);
}

bool decode(const uint8_t* bytes, FrameHead& head) {
    head.length = take(bytes, 4);
    head.kind = static_cast<Kind>(bytes[4]);
    head.connection = bytes[5];
    head.channel = static_cast<uint16_t>(take(bytes + 6, 2));
    head.sequence = take(bytes + 8, 4);
    head.crc = take(bytes + 12, 4);
    return head.kind >= Kind::kLogin && head.kind <= Kind::kEnd && head.length <= kMaxPayload;
}

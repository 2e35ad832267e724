#pragma once

#include <cstddef>
#include <cstdint>

// What travels between a station and its clients: frames of a head and a payload. All numbers are big-endian.
//
//    0   4  length of the payload
//    4   1  kind
//    5   1  connection: how often the channel has been opened, from 1
//    6   2  channel
//    8   4  sequence; in a question or answer, the user id or 0
//   12   4  CRC-32 of the payload
//
// A client logs in on a connection of its own, which then carries keep-alives. Each channel streams on
// another connection, opened with the user id that the login gave.
//
//   client               station                on
//   kLogin user\npass    kLoginAnswer user id   control   0: refused
//   kKeepAlive           kKeepAliveAnswer       control
//   kDrop                                       control   the station breaks all connections of this user
//   kOpen user id        kOpenAnswer user id    stream    0: refused; then kData frames follow
//   kClose               kEnd                   stream    the frames sent before come first
//
// Recordings hold whole frames, as they were on the wire.

enum class Kind : uint8_t {
    kLogin = 1,
    kLoginAnswer,
    kKeepAlive,
    kKeepAliveAnswer,
    kDrop,
    kOpen,
    kOpenAnswer,
    kData,
    kClose,
    kEnd
};

struct FrameHead {
    uint32_t length = 0;
    Kind kind = Kind::kData;
    uint8_t connection = 0;
    uint16_t channel = 0;
    uint32_t sequence = 0;
    uint32_t crc = 0;
};

constexpr size_t kHeadSize = 16;
constexpr uint32_t kMaxPayload = 64 * 1024;

void encode(const FrameHead& head, uint8_t* bytes);

// @return false for what can be no head
bool decode(const uint8_t* bytes, FrameHead& head);

// A head that carries no payload.
inline FrameHead bareHead(Kind kind, uint32_t value = 0, uint16_t channel = 0) {
    FrameHead head;
    head.kind = kind;
    head.sequence = value;
    head.channel = channel;
    return head;
}

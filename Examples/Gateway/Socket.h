#pragma once

#include "Wire.h"

// The client's end of a connection to a station. Nothing waits without limit: a peer that stops in the middle
// of a frame counts as gone after kPatience milliseconds. One thread at a time.
class Socket {
public:
    enum Result { kFrame, kNothing, kClosed, kGarbage };
    static constexpr int kPatience = 2000;

    Socket() = default;
    ~Socket() { close(); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool connect(const char* address, int port);
    void close();
    // Whether the connection is open and the peer has not closed it.
    bool isAlive() const;

    bool send(const FrameHead& head, const void* payload = nullptr);
    // @return kNothing if no byte came within that many milliseconds
    Result receiveHead(FrameHead& head, int milliseconds);
    bool receive(void* bytes, size_t count);
    // Sends a question and takes an answer of one kind without payload.
    Result ask(const FrameHead& question, const void* payload, Kind kind, FrameHead& answer);

private:
    bool waitFor(short events, int milliseconds) const;

    int m_socket = -1;
};

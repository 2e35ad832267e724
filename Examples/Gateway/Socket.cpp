#include "Socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

bool Socket::connect(const char* address, int port) {
    close();
    sockaddr_in server = {};
    server.sin_family = AF_INET;
    server.sin_port = htons(static_cast<uint16_t>(port));
    if (inet_pton(AF_INET, address, &server.sin_addr) != 1) return false;
    m_socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_socket < 0) return false;
    const int on = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const timeval patience = {kPatience / 1000, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (::connect(m_socket, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0) return true;
    close();
    return false;
}

void Socket::close() {
    if (m_socket >= 0) ::close(m_socket);
    m_socket = -1;
}

bool Socket::isAlive() const {
    if (m_socket < 0) return false;
    char byte = 0;
    const ssize_t count = recv(m_socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

bool Socket::send(const FrameHead& head, const void* payload) {
    std::vector<uint8_t> bytes(kHeadSize + head.length);
    encode(head, bytes.data());
    if (head.length > 0) std::memcpy(bytes.data() + kHeadSize, payload, head.length);
    for (size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        sent += static_cast<size_t>(count);
    }
    return true;
}

Socket::Result Socket::receiveHead(FrameHead& head, int milliseconds) {
    if (m_socket < 0) return kClosed;
    if (!waitFor(POLLIN, milliseconds)) return kNothing;
    uint8_t bytes[kHeadSize];
    if (!receive(bytes, sizeof bytes)) return kClosed;
    return decode(bytes, head) ? kFrame : kGarbage;
}

bool Socket::receive(void* bytes, size_t count) {
    auto* place = static_cast<uint8_t*>(bytes);
    while (count > 0) {
        if (!waitFor(POLLIN, kPatience)) return false;
        const ssize_t got = recv(m_socket, place, count, 0);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        place += got;
        count -= static_cast<size_t>(got);
    }
    return true;
}

Socket::Result Socket::ask(const FrameHead& question, const void* payload, Kind kind, FrameHead& answer) {
    if (!send(question, payload)) return kClosed;
    const Result result = receiveHead(answer, kPatience);
    if (result != kFrame) return result;
    return answer.kind == kind && answer.length == 0 ? kFrame : kGarbage;
}

bool Socket::waitFor(short events, int milliseconds) const {
    pollfd source = {m_socket, events, 0};
    return poll(&source, 1, milliseconds) > 0;
}

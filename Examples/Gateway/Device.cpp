#include "Device.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Fundo3/Time.h"
#include "Utils/Crc.h"

using namespace Tovra::Fundo;

static constexpr char kName[] = "station";

namespace {

constexpr uint64_t kFramePeriod = 5;       // milliseconds
constexpr uint32_t kSmallestFrame = 64;    // bytes
constexpr uint32_t kLargestFrame = 12000;  // bytes
constexpr size_t kMaxQueued = 1 << 20;     // bytes that may wait for a slow client
constexpr uint32_t kMaxQuestion = 1024;    // bytes of payload in what a client sends
constexpr uint32_t kFaultyFrame = 50;

uint32_t pick(std::mt19937& random, uint32_t from, uint32_t to) {
    return std::uniform_int_distribution<uint32_t>(from, to)(random);
}

}  // namespace

Device::Device(Options options, std::vector<uint8_t> source)
    : m_options(std::move(options)), m_source(std::move(source)), m_random(std::random_device{}()) {
    for (int number = 0; number < m_options.channels; ++number) {
        auto channel = std::make_unique<Channel>();
        const std::string path = m_options.folder + "/sent-" + std::to_string(number) + ".rec";
        channel->file.open(path.c_str(), CLfsFile::modeWrite | CLfsFile::modeCreate);
        channel->random.seed(m_random());
        channel->place = channel->random() % m_source.size();
        m_channels.push_back(std::move(channel));
    }
}

Device::~Device() {
    for (const Connection& connection : m_connections)
        close(connection.socket);
    if (m_listener >= 0) close(m_listener);
}

int Device::listen(int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    auto* place = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    if (bind(m_listener, place, size) != 0 || ::listen(m_listener, 16) != 0) return 0;
    return getsockname(m_listener, place, &size) == 0 ? ntohs(address.sin_port) : 0;
}

void Device::run(int ending, uint64_t end) {
    pollfd wanted = {ending, POLLIN, 0};
    while (end == 0 || CTime::getCurrentMilliSecond() < end) {
        turn(ending);
        if (poll(&wanted, 1, 0) > 0) return;
    }
}

void Device::turn(int ending) {
    std::vector<pollfd> sources = {{ending, POLLIN, 0}, {m_listener, POLLIN, 0}};
    for (const Connection& connection : m_connections) {
        const bool waits = connection.sent < connection.out.size();
        sources.push_back({connection.socket, static_cast<short>(waits ? POLLIN | POLLOUT : POLLIN), 0});
    }
    if (poll(sources.data(), sources.size(), static_cast<int>(kFramePeriod)) > 0) {
        size_t i = 2;
        // Connections accepted in this turn stand behind those that were asked.
        if (sources[1].revents != 0) accept();
        for (auto next = m_connections.begin(); i < sources.size(); ++next, ++i) {
            if ((sources[i].revents & ~POLLOUT) != 0) read(*next);
        }
    }
    produce(CTime::getCurrentMilliSecond());
    for (Connection& connection : m_connections)
        write(connection);
    sweep();
}

void Device::accept() {
    Connection connection;
    connection.socket = accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (connection.socket < 0) return;
    if (CTime::getCurrentMilliSecond() < m_deafUntil) {
        close(connection.socket);
        return;
    }
    m_connections.push_back(std::move(connection));
}

void Device::read(Connection& connection) {
    uint8_t bytes[4096];
    const ssize_t count = recv(connection.socket, bytes, sizeof bytes, 0);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
    connection.ended = connection.ended || count <= 0;
    if (count > 0) connection.in.insert(connection.in.end(), bytes, bytes + count);
    while (!connection.ended && connection.in.size() >= kHeadSize) {
        FrameHead head;
        if (!decode(connection.in.data(), head) || head.length > kMaxQuestion) {
            FUNDO_LOG_WARN(kName, "a client does not keep to the protocol\n");
            connection.ended = true;
            return;
        }
        const size_t size = kHeadSize + head.length;
        if (connection.in.size() < size) return;
        const auto start = connection.in.begin();
        const std::string payload(start + kHeadSize, start + static_cast<ptrdiff_t>(size));
        connection.in.erase(start, start + static_cast<ptrdiff_t>(size));
        obey(connection, head, payload);
    }
}

void Device::obey(Connection& connection, const FrameHead& head, const std::string& payload) {
    switch (head.kind) {
        case Kind::kLogin:
            return logIn(connection, payload);
        case Kind::kOpen:
            return open(connection, head);
        case Kind::kClose:
            return finish(connection);
        case Kind::kDrop:
            return drop(connection.user);
        case Kind::kKeepAlive:
            ++m_keepAlives;
            return queue(connection, bareHead(Kind::kKeepAliveAnswer));
        default:
            connection.ended = true;
    }
}

void Device::logIn(Connection& connection, const std::string& words) {
    if (takeFault("garbage")) {
        for (int i = 0; i < 64; ++i)
            connection.out.push_back(static_cast<uint8_t>(m_random() | 0x80));
        return;
    }
    const bool right = words == m_options.user + '\n' + m_options.password;
    connection.user = right ? pick(m_random, 1, 0x3fffffff) : 0;
    if (right) m_users.insert(connection.user);
    ++(right ? m_logins : m_refusals);
    queue(connection, bareHead(Kind::kLoginAnswer, connection.user));
    if (right) FUNDO_LOG_INFO(kName, "login of user %u\n", connection.user);
}

void Device::open(Connection& connection, const FrameHead& head) {
    const bool known = m_users.count(head.sequence) != 0 && head.channel < m_channels.size();
    queue(connection, bareHead(Kind::kOpenAnswer, known ? head.sequence : 0, head.channel));
    if (!known) return;
    connection.user = head.sequence;
    connection.channel = head.channel;
    Channel& channel = *m_channels[head.channel];
    if (channel.sink != nullptr) channel.sink->ended = true;
    channel.sink = &connection;
    if (!channel.started) channel.due = CTime::getCurrentMilliSecond();
    channel.started = true;
    ++channel.opened;
}

void Device::finish(Connection& connection) {
    if (connection.channel < 0) return;
    Channel& channel = *m_channels[static_cast<size_t>(connection.channel)];
    if (channel.sink != &connection) return;
    channel.sink = nullptr;
    channel.started = false;
    queue(connection, bareHead(Kind::kEnd));
}

// As if a cable had been cut: what is under way does not arrive.
void Device::drop(uint32_t user) {
    if (user == 0) return;
    FUNDO_LOG_WARN(kName, "user %u is dropped\n", user);
    ++m_drops;
    m_users.erase(user);
    m_deafUntil = CTime::getCurrentMilliSecond() + m_options.outage;
    for (Connection& connection : m_connections) {
        if (connection.user != user) continue;
        const linger none = {1, 0};
        setsockopt(connection.socket, SOL_SOCKET, SO_LINGER, &none, sizeof none);
        connection.out.clear();
        connection.sent = 0;
        connection.ended = true;
        // Nothing made in this turn goes to it.
        if (connection.channel >= 0) m_channels[static_cast<size_t>(connection.channel)]->sink = nullptr;
    }
}

void Device::produce(uint64_t now) {
    for (size_t number = 0; number < m_channels.size(); ++number) {
        Channel& channel = *m_channels[number];
        for (; channel.started && channel.due <= now; channel.due += kFramePeriod)
            makeFrame(static_cast<int>(number), channel);
    }
}

void Device::makeFrame(int number, Channel& channel) {
    FrameHead head;
    head.length = pick(channel.random, kSmallestFrame, kLargestFrame);
    head.channel = static_cast<uint16_t>(number);
    head.connection = channel.opened;
    head.sequence = ++channel.sequence;
    Connection* sink = channel.sink;
    if (sink == nullptr || sink->ended || sink->out.size() - sink->sent > kMaxQueued) return;

    std::vector<uint8_t> payload(head.length);
    for (uint8_t& byte : payload) {
        byte = m_source[channel.place];
        channel.place = (channel.place + 1) % m_source.size();
    }
    head.crc = Tovra::Utils::crc32(payload.data(), payload.size());
    ++channel.sent;
    uint8_t bytes[kHeadSize];
    encode(head, bytes);
    channel.file.write(bytes, sizeof bytes);
    channel.file.write(payload.data(), head.length);

    const bool faulty = number == 0 && channel.sequence >= kFaultyFrame;
    if (faulty && takeFault("corrupt")) payload[head.length / 2] ^= 0x10;
    const bool cut = faulty && takeFault("cut");
    queue(*sink, head, payload.data());
    if (!cut) return;
    sink->out.resize(sink->out.size() - head.length / 2);
    write(*sink);
    sink->ended = true;
}

bool Device::takeFault(const char* name) {
    if (m_options.fault != name) return false;
    FUNDO_LOG_WARN(kName, "fault: %s\n", name);
    m_options.fault.clear();
    return true;
}

void Device::queue(Connection& connection, const FrameHead& head, const uint8_t* payload) {
    uint8_t bytes[kHeadSize];
    encode(head, bytes);
    connection.out.insert(connection.out.end(), bytes, bytes + kHeadSize);
    if (head.length > 0) connection.out.insert(connection.out.end(), payload, payload + head.length);
}

void Device::write(Connection& connection) {
    if (connection.ended || connection.sent == connection.out.size()) return;
    const ssize_t count = send(connection.socket, connection.out.data() + connection.sent,
                               connection.out.size() - connection.sent, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count > 0) connection.sent += static_cast<size_t>(count);
    if (count < 0 && errno != EAGAIN && errno != EINTR) connection.ended = true;
    if (connection.sent < connection.out.size()) return;
    connection.out.clear();
    connection.sent = 0;
}

void Device::sweep() {
    for (auto next = m_connections.begin(); next != m_connections.end();) {
        const auto connection = next++;
        if (!connection->ended) continue;
        for (const auto& channel : m_channels) {
            if (channel->sink == &*connection) channel->sink = nullptr;
        }
        // The end of the control connection is the logout.
        if (connection->channel < 0) m_users.erase(connection->user);
        close(connection->socket);
        m_connections.erase(connection);
    }
}

void Device::showTotals() const {
    for (size_t number = 0; number < m_channels.size(); ++number) {
        const Channel& channel = *m_channels[number];
        std::printf("station channel %zu: made %u frames, sent %u, opened %d\n", number, channel.sequence,
                    channel.sent, channel.opened);
    }
    std::printf("station: logins %d, refused %d, drops %d, keep-alives %d\n", m_logins, m_refusals, m_drops,
                m_keepAlives);
}

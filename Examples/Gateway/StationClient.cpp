#include "StationClient.h"

#include <algorithm>
#include <string>
#include <vector>

#include "Fundo/Fundo3/Error.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Support/Guard.h"

using namespace Tovra::Component;
using namespace Tovra::Fundo;

static constexpr char kName[] = "client";

namespace {

constexpr unsigned kKeepAlivePeriod = 500;  // milliseconds
constexpr unsigned kKeepAliveLimit = 5000;  // milliseconds

CMutex s_mutex;
std::vector<StationClient*> s_clients;

}  // namespace

void describeErrors() {
    setErrMsg(kUnreachable, "Gateway: station cannot be reached!");
    setErrMsg(kGarbled, "Gateway: station does not keep to the protocol!");
    setErrMsg(kRefusedChannel, "Gateway: station refuses the channel!");
}

StationClient::~StationClient() {
    const Guard guard(s_mutex);
    s_clients.erase(std::remove(s_clients.begin(), s_clients.end(), this), s_clients.end());
}

void StationClient::visitAll(const std::function<void(StationClient&)>& visit) {
    const Guard guard(s_mutex);
    for (StationClient* client : s_clients)
        visit(*client);
}

void StationClient::enlist() {
    if (m_enlisted.exchange(true)) return;
    const Guard guard(s_mutex);
    s_clients.push_back(this);
}

bool StationClient::checkBroken() {
    const Guard guard(m_mutex);
    return !m_connection.isAlive();
}

bool StationClient::login() {
    // First: a visit holds the list and waits for a client.
    enlist();
    const Guard guard(m_mutex);
    // Several channels notice a broken connection at once; the first of them mends it for all.
    if (m_connection.isAlive()) return true;

    ServerInfo info = {};
    getServerInfo(info);
    if (!m_connection.connect(info.address, info.port)) return failLogin(kUnreachable);
    const std::string words = std::string(info.userName) + '\n' + info.password;
    FrameHead question = bareHead(Kind::kLogin);
    question.length = static_cast<uint32_t>(words.size());
    FrameHead answer;
    const Socket::Result result = m_connection.ask(question, words.data(), Kind::kLoginAnswer, answer);
    if (result == Socket::kGarbage) return failLogin(kGarbled);
    if (result != Socket::kFrame) return failLogin(kUnreachable);
    if (answer.sequence == 0) return failLogin(kWrongPassword);

    m_userId = static_cast<int>(answer.sequence);
    ++m_logins;
    FUNDO_LOG_INFO(kName, "logged in at port %d as user %d\n", info.port, m_userId.load());
    m_timer.start({&StationClient::keepAlive, this}, kKeepAlivePeriod, kKeepAlivePeriod, 0, kKeepAliveLimit);
    return true;
}

bool StationClient::failLogin(int error) {
    m_connection.close();
    setLastError(error);
    return false;
}

bool StationClient::logout() {
    m_timer.stopAndWait();
    const Guard guard(m_mutex);
    m_connection.close();
    return true;
}

bool StationClient::getUserID(int& id) {
    id = m_userId;
    return true;
}

bool StationClient::askForDrop() {
    const Guard guard(m_mutex);
    return m_connection.isAlive() && m_connection.send(bareHead(Kind::kDrop));
}

void StationClient::keepAlive(unsigned long) {
    const Guard guard(m_mutex);
    if (!m_connection.isAlive()) return;
    FrameHead answer;
    const auto result = m_connection.ask(bareHead(Kind::kKeepAlive), nullptr, Kind::kKeepAliveAnswer, answer);
    if (result == Socket::kFrame) {
        ++m_keepAlives;
        return;
    }
    FUNDO_LOG_WARN(kName, "user %d: no answer to a keep-alive\n", m_userId.load());
    m_connection.close();
}

#pragma once

#include <atomic>
#include <functional>

#include "Component/Client.h"
#include "Fundo/Fundo3/Timer.h"
#include "Socket.h"

// The gateway's own error numbers, next to those of the component framework.
constexpr int kUnreachable = 0x20000001;
constexpr int kGarbled = 0x20000002;
constexpr int kRefusedChannel = 0x20000003;
constexpr int kWrongPassword = 0x10030015;

// Registers the texts of the gateway's error numbers.
void describeErrors();

// One login to one station, over a connection that carries keep-alives afterwards. A keep-alive that is not
// answered closes the connection, which the next request finds out.
class StationClient : public Tovra::Component::IClient {
public:
    ~StationClient() override;

    bool checkBroken() override;
    bool login() override;
    bool logout() override;
    bool getUserID(int& id) override;
    void destroy() override { delete this; }
    void reservedOperation() override {}

    // Tells the station to break all connections of this user.
    bool askForDrop();
    int logins() const { return m_logins; }
    int keepAlives() const { return m_keepAlives; }

    // Visits every client that has tried to log in. A visit must not drop a client's reference.
    static void visitAll(const std::function<void(StationClient&)>& visit);

private:
    void enlist();
    bool failLogin(int error);
    void keepAlive(unsigned long);

    Tovra::Fundo::CMutex m_mutex;  // guards the connection: requests and the timer share it
    Socket m_connection;
    std::atomic<bool> m_enlisted{false};
    std::atomic<int> m_userId{-1};
    std::atomic<int> m_logins{0};
    std::atomic<int> m_keepAlives{0};
    Tovra::Fundo::CTimer m_timer{"KeepAlive"};  // last: it ends before what its callback uses
};

// Makes clients for class ids that begin with "Station".
class StationClientFactory : public Tovra::Component::IClient::IFactory {
public:
    Tovra::Component::ClassID clsid() const override { return "Station"; }
    Tovra::Component::IUnknown* create(const Tovra::Component::ServerInfo&) override {
        return new StationClient;
    }
};

#pragma once

#include <atomic>

#include "Component/Client.h"
#include "Component/ComponentFactory.h"

// Objects, clients and factories that count what happens to them.

struct Counted : Tovra::Component::IUnknown {
    Counted() { ++alive; }
    ~Counted() override { --alive; }
    void destroy() override { delete this; }
    void reservedOperation() override {}

    static inline std::atomic<int> alive{0};
};

struct FakeClient : Tovra::Component::IClient {
    FakeClient() { ++alive; }
    ~FakeClient() override { --alive; }

    bool checkBroken() override { return broken; }
    bool login() override {
        ++logins;
        if (!accepts) Tovra::Fundo::setLastError(0x10030007);
        return accepts;
    }
    bool logout() override {
        ++logouts;
        return true;
    }
    bool getUserID(int& id) override {
        id = userId;
        return true;
    }
    void destroy() override {
        ++destroys;
        delete this;
    }
    void reservedOperation() override {}

    static inline std::atomic<bool> accepts{true};
    static inline std::atomic<bool> broken{false};
    static inline std::atomic<int> userId{7};
    static inline std::atomic<int> alive{0};
    static inline std::atomic<int> logins{0};
    static inline std::atomic<int> logouts{0};
    static inline std::atomic<int> destroys{0};
};

struct FakeClientFactory : Tovra::Component::IClient::IFactory {
    explicit FakeClientFactory(const char* id = "Station") : m_id(id) {}
    Tovra::Component::ClassID clsid() const override { return m_id; }
    Tovra::Component::IUnknown* create(const Tovra::Component::ServerInfo&) override {
        ++made;
        return makes ? new FakeClient : nullptr;
    }

    std::atomic<int> made{0};
    std::atomic<bool> makes{true};

private:
    const char* m_id;
};

struct FakeFactory : Tovra::Component::IFactoryUnknown {
    explicit FakeFactory(const char* id) : m_id(id) {}
    Tovra::Component::ClassID clsid() const override { return m_id; }
    Tovra::Component::IUnknown* create(const Tovra::Component::ServerInfo&) override { return new Counted; }

private:
    const char* m_id;
};

inline Tovra::Component::ServerInfo serverAt(int port) {
    Tovra::Component::ServerInfo info = {};
    info.address = "10.0.0.1";
    info.port = port;
    info.userName = "user";
    info.password = "word";
    return info;
}

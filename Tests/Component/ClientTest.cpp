#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

#include "Component/Client.h"
#include "Component/ClientFactory.h"
#include "Component/ComponentFactory.h"
#include "Component/ComponentSelector.h"
#include "Component/LocalComSelectManager.h"
#include "Component/ServerInfoQueryer.h"
#include "Fakes.h"
#include "Fundo/Fundo3/Error.h"

using namespace Tovra::Component;
using Detail::CComponentHelper;
using Tovra::Fundo::getLastError;

namespace {

// A client factory for "Station" and a channel factory reached through it.
class Clients : public testing::Test {
protected:
    Clients() {
        m_clients.registerFactory("Client");
        m_channels.registerFactory("Channel");
    }

    IFactoryUnknown* ask(const ServerInfo& info, IClient*& client, const char* iid = "Channel") {
        return CComponentHelper::getComponentFactory(iid, "Station.main", info, client);
    }

    FakeClientFactory m_clients;
    FakeFactory m_channels{"Station.main"};
};

TEST_F(Clients, AreSharedByEqualRequestsAndEndWithTheLast) {
    IClient* first = nullptr;
    IClient* second = nullptr;
    const ServerInfo server = serverAt(1);
    EXPECT_EQ(ask(server, first), &m_channels);
    EXPECT_EQ(getRefCount(first), 1);
    EXPECT_EQ(IClient::getCurrentUserID(), 7);
    ServerInfo again = serverAt(1);
    again.text5 = again.text9 = "no identity";
    again.value3 = 5;
    EXPECT_EQ(ask(again, second), &m_channels);
    EXPECT_EQ(second, first);
    EXPECT_EQ(getRefCount(first), 2);
    EXPECT_EQ(FakeClient::logins, 1);

    IClient* other = nullptr;
    ServerInfo different = serverAt(1);
    different.flag4 = 1;
    ask(different, other);
    EXPECT_NE(other, first);
    CComponentHelper::release(other);
    CComponentHelper::release(first);
    EXPECT_EQ(FakeClient::logouts, 1);
    CComponentHelper::release(first);
    EXPECT_EQ(FakeClient::logouts, 2);
    EXPECT_EQ(FakeClient::destroys, 2);
    EXPECT_EQ(FakeClient::alive, 0);
}

TEST_F(Clients, ThatFailToLogInStayListedForTheNextAttempt) {
    IClient* client = nullptr;
    FakeClient::accepts = false;
    EXPECT_EQ(ask(serverAt(1), client), nullptr);
    EXPECT_EQ(getLastError(), 0x10030007);
    EXPECT_EQ(client, nullptr);
    EXPECT_EQ(FakeClient::alive, 1);
    FakeClient::accepts = true;
    EXPECT_EQ(ask(serverAt(1), client), &m_channels);
    EXPECT_EQ(m_clients.made, 1);
    EXPECT_EQ(getRefCount(client), 1);

    // A connection that breaks is noticed by the next request.
    FakeClient::broken = true;
    FakeClient::accepts = false;
    IClient* none = nullptr;
    EXPECT_EQ(ask(serverAt(1), none), nullptr);
    EXPECT_TRUE(clientIsBroken(client));
    EXPECT_EQ(CClientInstanceList::instance()->findClientInstance("Station", serverAt(1)), nullptr);
    FakeClient::accepts = true;
    EXPECT_EQ(ask(serverAt(1), none), &m_channels);
    EXPECT_EQ(none, client);
    EXPECT_TRUE(clientIsLogined(client));
    CComponentHelper::release(client);
    CComponentHelper::release(none);
    EXPECT_EQ(FakeClient::alive, 0);
}

TEST_F(Clients, GoBackWhenTheFactoryIsUnknown) {
    IClient* client = nullptr;
    EXPECT_EQ(ask(serverAt(1), client, "Nothing"), nullptr);
    EXPECT_EQ(getLastError(), 0x10030000);
    // Logged in, with the reference that keeps it listed until some request finishes the job.
    EXPECT_EQ(FakeClient::alive, 1);
    EXPECT_EQ(CComponentHelper::getComponentFactory("Channel", "Station.other", serverAt(1), client),
              nullptr);
    EXPECT_EQ(getLastError(), 0x10030001);
    EXPECT_EQ(CComponentHelper::getComponentFactory("Channel", "Elsewhere.main", serverAt(1), client),
              nullptr);
    EXPECT_EQ(getLastError(), 0x10030002);
    m_clients.makes = false;
    EXPECT_EQ(ask(serverAt(2), client), nullptr);
    EXPECT_EQ(getLastError(), 0x10030003);

    m_channels.unregisterFactory("Channel");
    EXPECT_EQ(ask(serverAt(1), client), nullptr);
    ASSERT_NE(client, nullptr);
    EXPECT_EQ(ClassID::getClassIDs("Channel"), std::vector<std::string>{"Station.main"});
    CComponentHelper::release(client);
    EXPECT_EQ(FakeClient::alive, 0);
}

TEST_F(Clients, AreNotNeededWithoutAServerOrForTheirOwnFactories) {
    IClient* client = nullptr;
    EXPECT_EQ(ask(ServerInfo::none, client), &m_channels);
    EXPECT_EQ(client, nullptr);
    IFactoryUnknown* wrapper =
        CComponentHelper::getComponentFactory("Client", "Station", serverAt(1), client);
    EXPECT_EQ(wrapper, ClientFactory::wrapClientFactory(&m_clients));
    EXPECT_EQ(FakeClient::logins, 0);
    const ServerInfo copy = ServerInfo::none;
    EXPECT_EQ(ask(copy, client), &m_channels);
    EXPECT_NE(client, nullptr);
    EXPECT_EQ(m_clients.instance(7), client);
    IClient* known = nullptr;
    EXPECT_EQ(CComponentHelper::getComponentFactory("Channel", "Station.main", 7, known), &m_channels);
    EXPECT_EQ(known, client);
    EXPECT_EQ(CComponentHelper::getComponentFactory("Channel", "Station.main", 8, known), nullptr);
    CComponentHelper::release(client);
    CComponentHelper::release(client);
}

TEST_F(Clients, MadeByHandAreSharedWhenRemoteAndNewWhenLocal) {
    auto* wrapper = dynamic_cast<IClientFactoryWrap*>(ClientFactory::wrapClientFactory(&m_clients));
    IUnknown* first = wrapper->create(serverAt(3));
    EXPECT_EQ(getRefCount(first), 1);
    EXPECT_EQ(wrapper->create(serverAt(3)), first);
    EXPECT_EQ(getRefCount(first), 2);
    EXPECT_EQ(m_clients.made, 1);
    EXPECT_FALSE(clientIsIdle(static_cast<IClient*>(first)));

    FakeClientFactory local("Local");
    auto* localWrapper = dynamic_cast<IClientFactoryWrap*>(ClientFactory::wrapClientFactory(&local));
    IUnknown* a = localWrapper->create(serverAt(3));
    IUnknown* b = localWrapper->create(serverAt(3));
    EXPECT_NE(a, b);
    for (IUnknown* client : {first, first, a, b})
        CComponentHelper::release(client);
    EXPECT_EQ(FakeClient::alive, 0);
}

TEST_F(Clients, TellTheirServerKeepTheFirstSavedNameAndAbort) {
    IClient* client = nullptr;
    ask(serverAt(4), client);
    EXPECT_TRUE(client->saveUserName("first"));
    EXPECT_TRUE(client->saveUserName("second"));
    ServerInfo info = {};
    EXPECT_TRUE(client->getServerInfo(info));
    EXPECT_STREQ(info.userName, "first");
    EXPECT_STREQ(info.address, "10.0.0.1");
    EXPECT_EQ(info.port, 4);
    EXPECT_FALSE(clientIsSameAs(client, "Station", serverAt(4)));
    EXPECT_TRUE(clientIsSameAs(client, "Stat", info));
    EXPECT_FALSE(clientIsSameAs(client, "Stations", info));
    ServerChallenge challenge;
    EXPECT_FALSE(client->getChallenge(challenge));
    EXPECT_EQ(getLastError(), 0x10030010);

    static int s_reason;
    struct Watcher {
        void see(void* data, ClassID id, TComPtr<IClient> who, IClient::Status status, int reason) {
            EXPECT_EQ(data, this);
            EXPECT_STREQ(id.name, "Station");
            EXPECT_GE(getRefCount(who.get()), 2);
            EXPECT_EQ(status, IClient::statusAborted);
            s_reason = reason;
        }
    } watcher;
    const IClient::StatusProc proc(&Watcher::see, &watcher);
    client->setCustomData(&watcher);
    EXPECT_TRUE(client->attachStatusProc(proc));
    EXPECT_FALSE(client->attachStatusProc(proc));
    EXPECT_TRUE(client->abort(42));
    EXPECT_EQ(s_reason, 42);
    EXPECT_TRUE(client->detachStatusProc(proc));
    EXPECT_FALSE(client->detachStatusProc(proc));
    CComponentHelper::release(client);
    EXPECT_EQ(FakeClient::alive, 0);
}

TEST(Factories, ListTheirClassesInOrderAndKeepTheFirstDefault) {
    FakeFactory b("b");
    FakeFactory a("a");
    b.registerFactory("Iface");
    a.registerFactory("Iface");
    const ClassIDList list("Iface");
    ASSERT_EQ(list.count(), 2);
    EXPECT_STREQ(list[0].c_str(), "a");
    EXPECT_EQ(ClassIDList("Unknown").count(), 0);
    EXPECT_DEATH(list[-1], "assertion \\(\\(size_t\\)index < m_internal->ids.size\\(\\)\\) failed");
    EXPECT_EQ(Tovra::Fundo::getErrorMessage(0x10030005), "Component error: tring login!");
    EXPECT_STREQ(CLocalComSelectManager::getDefaultClassID("Iface").c_str(), "Local");
    EXPECT_TRUE(CLocalComSelectManager::setDefaultComponent("Iface", "a"));
    EXPECT_FALSE(CLocalComSelectManager::setDefaultComponent("Iface", "b"));
    EXPECT_STREQ(CLocalComSelectManager::getDefaultClassID("Iface").c_str(), "a");
    EXPECT_FALSE(CLocalComSelectManager::setDefaultComponent(nullptr, "a"));
}

struct Directory : IServerInfoQueryer {
    bool getServerInfoByChannel(int channel, Tovra::Fundo::CString& clsid, ServerInfo&) override {
        clsid = "Remote";
        return channel < 4;
    }
    bool getServerInfoByDeviceId(const char* id, Tovra::Fundo::CString&, ServerInfo&) override {
        return id[0] == '\0';
    }
    void destroy() override { delete this; }
    void reservedOperation() override {}
};

TEST(Queryer, AnswersLocalWithoutAHandlerAndKeepsTheFirst) {
    CServerInfoQueryerHelper& helper = *CServerInfoQueryerHelper::instance();
    Tovra::Fundo::CString clsid;
    ServerInfo info = {};
    EXPECT_TRUE(helper.getServerInfoByChannel(-7, clsid, info));
    EXPECT_STREQ(clsid.c_str(), "Local");
    EXPECT_FALSE(helper.getServerInfoByDeviceId("x", clsid, info));
    EXPECT_FALSE(setQueryerHandler({}));
    EXPECT_TRUE(setQueryerHandler(new Directory));
    EXPECT_FALSE(setQueryerHandler(new Directory));
    EXPECT_TRUE(helper.getServerInfoByChannel(3, clsid, info));
    EXPECT_STREQ(clsid.c_str(), "Remote");
    EXPECT_TRUE(helper.getServerInfoByChannel(-1, clsid, info));
    EXPECT_FALSE(helper.getServerInfoByChannel(-2, clsid, info));
    EXPECT_FALSE(helper.getServerInfoByDeviceId(nullptr, clsid, info));
    EXPECT_TRUE(helper.getServerInfoByDeviceId("", clsid, info));
    Tovra::Fundo::CString base = "Station";
    Tovra::Fundo::CString detail;
    EXPECT_STREQ(getClassId(base, detail).c_str(), "Station");
    detail = "main";
    EXPECT_STREQ(getClassId(base, detail).c_str(), "Station.main");
}

// Many threads, four servers, logins that fail, connections that break: every client ends exactly once.
TEST_F(Clients, SurviveManyThreadsThatAskAtRandom) {
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 16; ++t) {
        threads.emplace_back([&, t] {
            std::mt19937 random(t);
            for (int i = 0; i < 300; ++i) {
                FakeClient::accepts = random() % 8 != 0;
                FakeClient::broken = random() % 4 == 0;
                IClient* client = nullptr;
                ask(serverAt(static_cast<int>(random() % 4)), client);
                if (client != nullptr && random() % 16 == 0) client->abort(1);
                CComponentHelper::release(client);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    // What is left was made and never got: at most the keep-alive references of the four servers' clients.
    FakeClient::accepts = true;
    FakeClient::broken = false;
    for (int port = 0; port < 4; ++port) {
        IClient* client = nullptr;
        EXPECT_EQ(ask(serverAt(port), client), &m_channels);
        CComponentHelper::release(client);
    }
    EXPECT_EQ(FakeClient::alive + FakeClient::destroys, m_clients.made);
}

}  // namespace

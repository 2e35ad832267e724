#include <gtest/gtest.h>

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
    EXPECT_EQ(ask(serverAt(1), first), &m_channels);
    EXPECT_TRUE(getRefCount(first) == 1 && IClient::getCurrentUserID() == 7);
    ServerInfo again = serverAt(1);
    again.text5 = again.text9 = "no identity";
    again.value3 = 5;
    EXPECT_EQ(ask(again, second), &m_channels);
    EXPECT_TRUE(second == first && getRefCount(first) == 2 && FakeClient::logins == 1);

    IClient* other = nullptr;
    ServerInfo different = serverAt(1);
    different.flag4 = 1;
    ask(different, other);
    EXPECT_NE(other, first);
    CComponentHelper::release(other);
    CComponentHelper::release(first);
    EXPECT_EQ(FakeClient::logouts, 1);
    CComponentHelper::release(first);
    EXPECT_TRUE(FakeClient::logouts == 2 && FakeClient::destroys == 2 && FakeClient::alive == 0);
}

TEST_F(Clients, ThatFailToLogInStayListedForTheNextAttempt) {
    IClient* client = nullptr;
    FakeClient::accepts = false;
    EXPECT_EQ(ask(serverAt(1), client), nullptr);
    EXPECT_EQ(getLastError(), 0x10030007);
    EXPECT_TRUE(client == nullptr && FakeClient::alive == 1);
    FakeClient::accepts = true;
    EXPECT_EQ(ask(serverAt(1), client), &m_channels);
    EXPECT_TRUE(m_clients.made == 1 && getRefCount(client) == 1);

    // A connection that breaks is noticed by the next request.
    FakeClient::broken = true;
    FakeClient::accepts = false;
    IClient* none = nullptr;
    EXPECT_EQ(ask(serverAt(1), none), nullptr);
    EXPECT_TRUE(clientIsBroken(client));
    EXPECT_EQ(CClientInstanceList::instance()->findClientInstance("Station", serverAt(1)), nullptr);
    FakeClient::accepts = true;
    EXPECT_EQ(ask(serverAt(1), none), &m_channels);
    EXPECT_TRUE(none == client && clientIsLogined(client));
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
    EXPECT_TRUE(getRefCount(first) == 2 && m_clients.made == 1);

    FakeClientFactory local("Local");
    auto* localWrapper = dynamic_cast<IClientFactoryWrap*>(ClientFactory::wrapClientFactory(&local));
    IUnknown* a = localWrapper->create(serverAt(3));
    IUnknown* b = localWrapper->create(serverAt(3));
    for (IUnknown* client : {first, first, a, b})
        CComponentHelper::release(client);
    EXPECT_EQ(FakeClient::alive, 0);
}

TEST_F(Clients, TellTheirServerKeepTheFirstSavedNameAndAbort) {
    IClient* client = nullptr;
    ask(serverAt(4), client);
    EXPECT_TRUE(client->saveUserName("first") && client->saveUserName("second"));
    ServerInfo info = {};
    EXPECT_TRUE(client->getServerInfo(info) && info.port == 4);
    EXPECT_STREQ(info.userName, "first");
    EXPECT_STREQ(info.address, "10.0.0.1");
    EXPECT_FALSE(clientIsSameAs(client, "Station", serverAt(4)) || clientIsSameAs(client, "Stations", info));
    EXPECT_TRUE(clientIsSameAs(client, "Stat", info));
    ServerChallenge challenge;
    EXPECT_FALSE(client->getChallenge(challenge));
    EXPECT_EQ(getLastError(), 0x10030010);

    static int s_reason;
    struct Watcher {
        void see(void* data, ClassID id, TComPtr<IClient> who, IClient::Status status, int reason) {
            EXPECT_TRUE(data == this && status == IClient::statusAborted && getRefCount(who.get()) >= 2);
            EXPECT_STREQ(id.name, "Station");
            s_reason = reason;
        }
    } watcher;
    const IClient::StatusProc proc(&Watcher::see, &watcher);
    client->setCustomData(&watcher);
    EXPECT_TRUE(client->attachStatusProc(proc) && !client->attachStatusProc(proc));
    EXPECT_TRUE(client->abort(42) && s_reason == 42);
    EXPECT_TRUE(client->detachStatusProc(proc) && !client->detachStatusProc(proc));
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
    using Defaults = CLocalComSelectManager;
    EXPECT_STREQ(Defaults::getDefaultClassID("Iface").c_str(), "Local");
    EXPECT_TRUE(Defaults::setDefaultComponent("Iface", "a") && !Defaults::setDefaultComponent("Iface", "b"));
    EXPECT_STREQ(Defaults::getDefaultClassID("Iface").c_str(), "a");
    EXPECT_FALSE(Defaults::setDefaultComponent(nullptr, "a"));
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
    EXPECT_TRUE(setQueryerHandler(new Directory) && !setQueryerHandler(new Directory));
    EXPECT_TRUE(helper.getServerInfoByChannel(3, clsid, info) &&
                !helper.getServerInfoByChannel(-2, clsid, info));
    EXPECT_STREQ(clsid.c_str(), "Remote");
    EXPECT_TRUE(helper.getServerInfoByChannel(-1, clsid, info));
    EXPECT_STREQ(clsid.c_str(), "Local");
    EXPECT_FALSE(helper.getServerInfoByDeviceId(nullptr, clsid, info));
    EXPECT_TRUE(helper.getServerInfoByDeviceId("", clsid, info));
    Tovra::Fundo::CString base = "Station";
    Tovra::Fundo::CString detail;
    EXPECT_STREQ(getClassId(base, detail).c_str(), "Station");
    detail = "main";
    EXPECT_STREQ(getClassId(base, detail).c_str(), "Station.main");
}

}  // namespace

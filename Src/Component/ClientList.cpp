#include "Component/ClientList.h"

#include "Component/ClientFactory.h"
#include "Fundo/Fundo3/Timer.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Instance.h"
#include "Fundo3/Report.h"

namespace Tovra::Component {

static constexpr char kSource[] = "Src/Component/ClientFactory";

namespace {

constexpr unsigned kSweepPeriod = 60;      // milliseconds
constexpr unsigned kSweepTimeout = 60000;  // milliseconds

void end(IClient* client) {
    client->logout();
    client->destroy();
}

}  // namespace

ClientList& ClientList::instance() {
    static Fundo::Detail::Immortal<ClientList> s_list;
    return *s_list;
}

IClient* ClientList::takeUnbroken(const ClassID& clsid, const ServerInfo& info) {
    const Locked locked(m_mutex);
    IClient* client = findUnbroken(clsid, info);
    if (client != nullptr) client->addRef();
    return client;
}

void ClientList::insert(IClient* client) {
    if (client == nullptr) return;
    const Locked locked(m_mutex);
    m_clients.push_back(client);
}

int ClientList::release(IClient* client) {
    m_mutex.enter();
    const int count = decreaseRefCount(client);
    // It need not be listed: the sweep may have taken it.
    if (count == 0) m_clients.remove(client);
    m_mutex.leave();
    if (count == 0) end(client);
    return count;
}

void ClientList::sweep() {
    std::list<IClient*> idle;
    m_mutex.enter();
    for (auto next = m_clients.begin(); next != m_clients.end();) {
        const auto client = next++;
        if (clientIsIdle(*client) && getRefCount(*client) <= 1) idle.splice(idle.end(), m_clients, client);
    }
    m_mutex.leave();
    for (IClient* client : idle) {
        if (decreaseRefCount(client) == 0) end(client);
    }
}

struct CClientInstanceList::Internal {
    Fundo::CTimer timer{"ClientCheck"};
};

FUNDO_DEFINE_INSTANCE(CClientInstanceList)

CClientInstanceList::CClientInstanceList() : m_internal(new Internal) {
    m_internal->timer.start(
        Fundo::TFunction1<void, unsigned long>(&CClientInstanceList::removeIdleClientInstance, this), 0,
        kSweepPeriod, 0, kSweepTimeout);
}

CClientInstanceList::~CClientInstanceList() {
    m_internal->timer.stopAndWait();
    delete m_internal;
}

IClient* CClientInstanceList::findClientInstance(const ClassID& clsid, int userId) {
    return ClientList::instance().find(clsid, userId);
}

IClient* CClientInstanceList::findClientInstance(const ClassID& clsid, const ServerInfo& info) {
    return ClientList::instance().findUnbroken(clsid, info);
}

IClient* CClientInstanceList::getAndMakeClientInstance(const ClassID& clsid, const ServerInfo& info) {
    return ClientList::instance().handOut(clsid, info);
}

IClient* CClientInstanceList::getAndMakeClientInstance(const ClassID& clsid, int userId) {
    return ClientList::instance().handOut(clsid, userId);
}

void CClientInstanceList::insertClientInstance(IClient* client) { ClientList::instance().insert(client); }

int CClientInstanceList::releaseClientInstance(IClient* client) {
    FUNDO_ASSERT_IN(
        client != NULL,
        "int Tovra::Component::CClientInstanceList::releaseClientInstance(Tovra::Component::IClient *)");
    return ClientList::instance().release(client);
}

void CClientInstanceList::removeIdleClientInstance(unsigned long) { ClientList::instance().sweep(); }

}  // namespace Tovra::Component

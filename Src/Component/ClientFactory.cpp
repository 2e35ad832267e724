#include "Component/ClientFactory.h"

#include <cstring>
#include <map>
#include <string>

#include "Component/ClientInternal.h"
#include "Component/ClientList.h"
#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"

// Who holds a client made for a request: the caller, and a keep-alive reference that keeps it listed for the
// next attempt when a login or look-up fails. The first request that succeeds gives the keep-alive reference
// up; from then on the client lives by its callers' references, and the last of them ends it.

namespace Tovra::Component {

static constexpr char kSource[] = "Src/Component/ClientFactory";

namespace {

constexpr int kClientNotFound = 0x10030002;
constexpr int kClientNotExist = 0x10030003;

// Wrappers by factory. They live to the end of the process: callers keep them without a count.
struct Wrappers {
    Fundo::CMutex s_mutex;
    std::map<IFactoryUnknown*, IClientFactoryWrap*> s_clientFatories;
};

Wrappers& wrappers() {
    static Fundo::Detail::Immortal<Wrappers> s_wrappers;
    return *s_wrappers;
}

Fundo::CRecursiveMutex& clientMutex() {
    static Fundo::Detail::Immortal<Fundo::CRecursiveMutex> s_mutex;
    return *s_mutex;
}

bool isLocal(const ClassID& clsid) { return std::strcmp(clsid.name, ClassID::local.name) == 0; }

}  // namespace

Fundo::CRecursiveMutex& IClientFactoryWrap::m_clientMutex = clientMutex();

IClient* IClient::IFactory::instance(int userId) {
    return CClientInstanceList::instance()->findClientInstance(clsid(), userId);
}

IClientFactoryWrap::IClientFactoryWrap(IFactoryUnknown* factory)
    : m_original(dynamic_cast<IClient::IFactory*>(factory)) {
    FUNDO_ASSERT_IN(
        m_original != NULL,
        "Tovra::Component::IClientFactoryWrap::IClientFactoryWrap(Tovra::Component::IFactoryUnknown *)");
}

ClassID IClientFactoryWrap::clsid() const { return m_original->clsid(); }

IUnknown* IClientFactoryWrap::create(const ServerInfo& info) {
    const Fundo::Detail::MutexGuard<Fundo::CRecursiveMutex> guard(clientMutex());
    return make(info, true);
}

IClient* IClientFactoryWrap::createAndMake(const ServerInfo& info) {
    const Fundo::Detail::MutexGuard<Fundo::CRecursiveMutex> guard(clientMutex());
    return make(info, false);
}

// Contract: a client made by the user holds one reference that nobody has claimed, so the first request that
// finds it is handed it without a count.
IClient* IClientFactoryWrap::make(const ServerInfo& info, bool madeByUser) {
    CClientInstanceList* list = CClientInstanceList::instance();
    const ClassID id = clsid();
    const bool remote = !isLocal(id);
    if (remote) {
        IClient* listed = ClientList::instance().takeUnbroken(id, info);
        if (listed != nullptr) return listed;
    }
    IClient* client = dynamic_cast<IClient*>(m_original->create(info));
    if (client == nullptr) return nullptr;

    clientCreateInternal(client, id, info, madeByUser);
    if (madeByUser) {
        clientGetAndMarkUsing(client);
    } else {
        Detail::CComponentHelper::makeComponentObject(client);
        Detail::CComponentHelper::addRef(client);
    }
    if (remote && list->findClientInstance(id, info) != nullptr) {
        FUNDO_REPORT_THIS(Fundo::Detail::kError,
                          "remote client instance %p has been in CClientInstanceList already.\n",
                          static_cast<void*>(client));
    }
    list->insertClientInstance(client);
    Detail::CComponentHelper::setAsCurrentUser(client);
    return client;
}

IClient* ClientFactory::getAndMakeClientInstance(const ClassID& clsid, const ServerInfo& info) {
    return CClientInstanceList::instance()->getAndMakeClientInstance(clsid, info);
}

IClient* ClientFactory::getAndMakeClientInstance(const ClassID& clsid, int userId) {
    return CClientInstanceList::instance()->getAndMakeClientInstance(clsid, userId);
}

int ClientFactory::releaseClientObject(IClient* client) {
    FUNDO_ASSERT_IN(
        client != NULL,
        "static int Tovra::Component::ClientFactory::releaseClientObject(Tovra::Component::IClient *)");
    return ClientList::instance().release(client);
}

IFactoryUnknown* ClientFactory::wrapClientFactory(IFactoryUnknown* factory) {
    Wrappers& known = wrappers();
    const Fundo::Detail::MutexGuard<Fundo::CMutex> guard(known.s_mutex);
    IClientFactoryWrap*& wrapper = known.s_clientFatories[factory];
    if (wrapper == nullptr) wrapper = new IClientFactoryWrap(factory);
    return wrapper;
}

IClient* ClientFactory::createAndMakeClientObject(const ClassID& clsid, const ServerInfo& info) {
    const std::string name(clsid.name, std::strcspn(clsid.name, "."));
    IClient* none = nullptr;
    auto* wrapper = dynamic_cast<IClientFactoryWrap*>(Detail::CComponentHelper::getComponentFactory(
        "Client", ClassID(name.c_str()), ServerInfo::none, none));
    if (wrapper == nullptr) {
        Fundo::setLastError(kClientNotFound);
        return nullptr;
    }
    IClient* client = wrapper->createAndMake(info);
    if (client == nullptr) Fundo::setLastError(kClientNotExist);
    return client;
}

void ClientFactory::markClientUsing(IClient* client) {
    if (client == nullptr || clientGetAndMarkUsing(client) != 0) return;
    Detail::CComponentHelper::release(client);
}

}  // namespace Tovra::Component

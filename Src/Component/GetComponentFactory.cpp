#include <cstring>

#include "Component/Client.h"
#include "Component/ClientFactory.h"
#include "Component/ClientInternal.h"
#include "Component/Detail/ComponentHelper.h"
#include "Component/FactoryTable.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"

// One request for a factory: first the client that a remote class needs, logged in on this thread with no
// lock held, then the look-up under the table's lock, which gives the client back on a miss.

namespace Tovra::Component::Detail {

static constexpr char kSource[] = "Src/Component/ComponentFactory";

namespace {

constexpr int kInterfaceNotFound = 0x10030000;
constexpr int kClassNotFound = 0x10030001;

bool isClientInterface(const char* iid) { return std::strcmp(iid, "Client") == 0; }

// Logs in. On failure the caller's reference goes and the reason stands as last error.
bool logIn(IClient* client, const char* iid, const char* failure) {
    if (clientLogin(client)) {
        ClientAccess::of(client).noteLogin();
        return true;
    }
    // The end of the client must not hide why the login failed.
    const int error = Fundo::getLastError();
    CComponentHelper::release(client);
    Fundo::setLastError(error);
    FUNDO_REPORT_STATIC(Fundo::Detail::kDebug, "iid=%s could not been %s failed.\n", iid, failure);
    return false;
}

IClient* makeLoggedIn(const char* iid, const ClassID& clsid, const ServerInfo& info) {
    IClient* client = ClientFactory::createAndMakeClientObject(clsid, info);
    if (client == nullptr) {
        FUNDO_REPORT_STATIC(Fundo::Detail::kError,
                            "iid (%s) could not been got because clientInstance could not be created.\n",
                            iid);
        return nullptr;
    }
    return logIn(client, iid, "generated because log") ? client : nullptr;
}

// A logged-in client with one reference for the caller, or null.
IClient* findLoggedIn(const char* iid, const ClassID& clsid, const ServerInfo& info) {
    IClient* client = ClientFactory::getAndMakeClientInstance(clsid, info);
    if (client == nullptr) return makeLoggedIn(iid, clsid, info);

    switch (ClientAccess::of(client).loginState.load(std::memory_order_acquire)) {
        case ClientInternal::kCreated:
        case ClientInternal::kBroken:
            return logIn(client, iid, "got because log") ? client : nullptr;
        case ClientInternal::kLogined:
            if (!clientUpdateBroken(client)) return client;
            return logIn(client, iid, "got because re-log") ? client : nullptr;
        default:
            FUNDO_REPORT_STATIC(Fundo::Detail::kError,
                                "Fundo.getComponentFactory(): client state is unknown!\n");
            CComponentHelper::release(client);
            return nullptr;
    }
}

IFactoryUnknown* giveUp(IClient* client, int error) {
    CComponentHelper::release(client);
    Fundo::setLastError(error);
    return nullptr;
}

// Under the table's lock. Takes over the reference to found, which may be null.
IFactoryUnknown* lookUp(const char* iid, const ClassID& clsid, IClient* found, IClient*& client) {
    const auto& interfaces = FactoryTable::instance().s_interfaces;
    const auto classes = interfaces.find(iid);
    if (classes == interfaces.end()) return giveUp(found, kInterfaceNotFound);
    const auto factory = classes->second.find(clsid.name);
    if (factory == classes->second.end()) return giveUp(found, kClassNotFound);

    if (found != nullptr) CComponentHelper::setAsCurrentUser(found);
    client = found;
    if (isClientInterface(iid)) return ClientFactory::wrapClientFactory(factory->second);
    ClientFactory::markClientUsing(found);
    return factory->second;
}

IFactoryUnknown* lockAndLookUp(const char* iid, const ClassID& clsid, IClient* found, IClient*& client) {
    FactoryTable& table = FactoryTable::instance();
    const Fundo::Detail::MutexGuard<Fundo::CRecursiveMutex> guard(table.s_mutex);
    return lookUp(iid, clsid, found, client);
}

}  // namespace

IFactoryUnknown* CComponentHelper::getComponentFactory(const char* iid, const ClassID& clsid,
                                                       const ServerInfo& info, IClient*& client) {
    client = nullptr;
    IClient* found = nullptr;
    if (&info != &ServerInfo::none && !isClientInterface(iid)) {
        found = findLoggedIn(iid, clsid, info);
        if (found == nullptr) return nullptr;
    }
    return lockAndLookUp(iid, clsid, found, client);
}

IFactoryUnknown* CComponentHelper::getComponentFactory(const char* iid, const ClassID& clsid, int userId,
                                                       IClient*& client) {
    client = nullptr;
    IClient* found = nullptr;
    if (userId != -1 && !isClientInterface(iid)) {
        found = ClientFactory::getAndMakeClientInstance(clsid, userId);
        if (found == nullptr) return nullptr;
    }
    return lockAndLookUp(iid, clsid, found, client);
}

}  // namespace Tovra::Component::Detail

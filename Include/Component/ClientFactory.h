#pragma once

#include "Component/Client.h"
#include "Component/ComponentFactory.h"
#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/RecursiveMutex.h"

/// @file
/// All clients of the process stand in one list, so that equal requests share one login.

namespace Tovra::Fundo::Detail {
template <class T, bool lasting>
class Instance;
}

namespace Tovra::Component {

/// The list of clients, with the timer that sweeps those nobody came back for. Any thread may call any
/// operation; all run under the list's recursive mutex, but logout() and destroy() of a client never do.
class FUNDO_API CClientInstanceList {
public:
    /// The one list, made on first use.
    static CClientInstanceList* instance();

    /// The first client of a class with a user id, or null. No reference is counted.
    IClient* findClientInstance(const ClassID& clsid, int userId);
    /// The first client of a class and server that is not broken, or null. No reference is counted.
    IClient* findClientInstance(const ClassID& clsid, const ServerInfo& info);
    /// The first client of a class and server, in whatever state, handed out with a reference; or null.
    IClient* getAndMakeClientInstance(const ClassID& clsid, const ServerInfo& info);
    /// The first client of a class with a user id, handed out with a reference; or null.
    IClient* getAndMakeClientInstance(const ClassID& clsid, int userId);
    /// Appends a client; null is ignored.
    void insertClientInstance(IClient* client);
    /// Drops a reference; the last one takes the client from the list, logs it out and destroys it.
    /// @return the references left
    int releaseClientInstance(IClient* client);
    /// Sweeps idle clients; the timer "ClientCheck" calls it. The parameter is not used.
    void removeIdleClientInstance(unsigned long parameter);

private:
    friend class Fundo::Detail::Instance<CClientInstanceList, false>;
    CClientInstanceList();
    ~CClientInstanceList();
    struct Internal;
    Internal* m_internal;
};

/// A client factory, wrapped so that whatever it makes comes out listed.
class FUNDO_API IClientFactoryWrap : public IClient::IFactory {
public:
    /// @param factory the factory to wrap, asserted to be one of clients
    explicit IClientFactoryWrap(IFactoryUnknown* factory);

    /// The class of the wrapped factory.
    ClassID clsid() const override;
    /// A client with one reference for the caller, never swept: for a remote class the listed, unbroken one
    /// of this server if there is one, else a new one. @return null if the wrapped factory gave none
    IUnknown* create(const ServerInfo& info) override;
    /// The same for a request that is about to log in: a new client also has a reference that keeps it listed
    /// until it has been got once.
    IClient* createAndMake(const ServerInfo& info);

    /// Held while any wrapper makes a client. Never destroyed.
    static Fundo::CRecursiveMutex& m_clientMutex;

private:
    IClient* make(const ServerInfo& info, bool madeByUser);

    IClient::IFactory* m_original;
};

/// What the framework does with clients, on the one list.
class FUNDO_API ClientFactory {
public:
    /// See CClientInstanceList::getAndMakeClientInstance().
    static IClient* getAndMakeClientInstance(const ClassID& clsid, const ServerInfo& info);
    /// See CClientInstanceList::getAndMakeClientInstance().
    static IClient* getAndMakeClientInstance(const ClassID& clsid, int userId);
    /// See CClientInstanceList::releaseClientInstance(); the client is asserted not to be null. Usable to the
    /// very end of the process.
    static int releaseClientObject(IClient* client);
    /// The wrapper of a factory, the same one each time; it lives to the end of the process.
    static IFactoryUnknown* wrapClientFactory(IFactoryUnknown* factory);
    /// Makes a client through the factory that is registered under "Client" for the class id up to its first
    /// ".".
    /// @return null with the last error 0x10030002 (no such factory) or 0x10030003 (it made none)
    static IClient* createAndMakeClientObject(const ClassID& clsid, const ServerInfo& info);
    /// Gives up the reference that kept a client listed, the first time it is called; null is ignored.
    static void markClientUsing(IClient* client);
};

}  // namespace Tovra::Component

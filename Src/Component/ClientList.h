#pragma once

#include <list>

#include "Component/Client.h"
#include "Fundo/Fundo3/RecursiveMutex.h"
#include "Fundo3/MutexGuard.h"

namespace Tovra::Component {

// The clients themselves. CClientInstanceList adds the timer and ends at process exit; this stays usable,
// since a handler or a static pointer may drop a client later still.
//
// The count test of the sweep, the hand-out and the decrement of the last reference all run under the one
// mutex, so that no client is swept or ends while it is handed out. logout() and destroy() run without it.
class ClientList {
public:
    static ClientList& instance();

    template <typename Key>
    IClient* find(const ClassID& clsid, const Key& key) {
        return first([&](IClient* client) { return clientIsSameAs(client, clsid, key); });
    }
    IClient* findUnbroken(const ClassID& clsid, const ServerInfo& info) {
        return first(
            [&](IClient* client) { return !clientIsBroken(client) && clientIsSameAs(client, clsid, info); });
    }
    // Finds and takes a reference in one hold of the mutex.
    IClient* takeUnbroken(const ClassID& clsid, const ServerInfo& info);
    template <typename Key>
    IClient* handOut(const ClassID& clsid, const Key& key) {
        const Locked locked(m_mutex);
        IClient* client = find(clsid, key);
        if (client != nullptr) Detail::CComponentHelper::makeComponentInstance(client);
        return client;
    }
    void insert(IClient* client);
    int release(IClient* client);
    void sweep();

private:
    using Locked = Fundo::Detail::MutexGuard<Fundo::CRecursiveMutex>;

    template <typename Predicate>
    IClient* first(Predicate matches) {
        const Locked locked(m_mutex);
        for (IClient* client : m_clients) {
            if (matches(client)) return client;
        }
        return nullptr;
    }

    Fundo::CRecursiveMutex m_mutex;
    std::list<IClient*> m_clients;  // in order of insertion
};

}  // namespace Tovra::Component

#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "Component/Client.h"
#include "Component/ServerInfo.h"
#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/Signal.h"
#include "Fundo/Fundo3/Time.h"

namespace Tovra::Component {

// What the library keeps of a client: its own copy of the server's description, and the login state. The
// description is fixed at construction, but for the user name, which saveUserName() may publish once.
struct ClientInternal {
    enum LoginState { kCreated = 0, kLogined = 1, kBroken = 2 };

    ClientInternal(const ClassID& classId, const ServerInfo& info, bool byUser);
    ~ClientInternal();

    const std::string& currentUserName() const;
    bool saveUserName(const char* name);
    bool hasIdentity(const ServerInfo& info) const;
    bool hasClass(const ClassID& asked) const;
    void copyTo(ServerInfo& info) const;
    void stamp();
    void noteLogin();
    Fundo::CTime timeOfLogin();

    std::string clsid;
    std::string address;
    int32_t port;
    std::string userName;
    std::string password, text1, text2, text3, text4, text5, text6, text7, text8, text9;
    uint8_t flag1, flag2, flag3;
    bool flag4;
    int64_t value1;
    int32_t value2, value3;
    std::atomic<const std::string*> savedUserName{nullptr};

    std::atomic<int32_t> loginState{kCreated};
    std::atomic<uint64_t> lastUsedTime;  // milliseconds of the monotonic clock
    const bool madeByUser;
    std::atomic<int64_t> usingMarked{0};  // 1 once a caller has really got the client
    std::atomic<void*> customData{nullptr};
    Fundo::TSignal5<void*, ClassID, TComPtr<IClient>, IClient::Status, int> statusSignal{8};

private:
    Fundo::CMutex m_loginTimeMutex;  // two threads may log one client in at once
    Fundo::CTime m_loginTime;
};

// The library's own way to a client's state.
struct ClientAccess {
    static ClientInternal*& slot(IClient* client) { return client->m_internal; }
    static ClientInternal& of(IClient* client) { return *client->m_internal; }
};

}  // namespace Tovra::Component

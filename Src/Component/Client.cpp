#include "Component/Client.h"

#include <cstdint>

#include "Component/ClientInternal.h"
#include "Component/UnknownInternal.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Fundo3/ThreadSpecific.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Report.h"
#include "Platform/ThreadId.h"

namespace Tovra::Component {

static constexpr char kSource[] = "Src/Component/Client";

namespace {

constexpr int kNotImplemented = 0x10030010;
constexpr uint64_t kIdleMilliseconds = 300001;

Fundo::CThreadSpecific& currentUserSlot() {
    static Fundo::Detail::Immortal<Fundo::CThreadSpecific> s_tssCurrentUserID;
    return *s_tssCurrentUserID;
}

// Takes the slot's key at load, when there are keys left.
[[maybe_unused]] const Fundo::CThreadSpecific& s_atLoad = currentUserSlot();

bool notImplemented() {
    Fundo::setLastError(kNotImplemented);
    return false;
}

#define CLIENT_LOG_WARN(text)                                                                          \
    Fundo::logWarn("[%s:%d] this:%p tid:%d, " text, kSource, __LINE__, static_cast<const void*>(this), \
                   Fundo::Platform::currentThreadId())

}  // namespace

IClient::IClient() { Detail::UnknownAccess::of(this).isClient = true; }

IClient::~IClient() {
    delete m_internal;
    m_internal = nullptr;
}

bool IClient::checkAuthority(const std::string&) { return notImplemented(); }
bool IClient::getCurrentTime(Fundo::CTime&) { return notImplemented(); }
bool IClient::setCurrentTime(const Fundo::CTime&, int) { return notImplemented(); }
bool IClient::loginAgain(const ServerInfo&) { return notImplemented(); }
bool IClient::checkAuthorityString(const char*) { return notImplemented(); }
bool IClient::loginFirst() { return notImplemented(); }
bool IClient::getChallenge(ServerChallenge&) { return notImplemented(); }

bool IClient::attachStatusProc(StatusProc proc) {
    FUNDO_ASSERT_IN(m_internal, __PRETTY_FUNCTION__);
    return m_internal->statusSignal.attach(proc, decltype(m_internal->statusSignal)::any) > 0;
}

bool IClient::detachStatusProc(StatusProc proc) {
    FUNDO_ASSERT_IN(m_internal, __PRETTY_FUNCTION__);
    return m_internal->statusSignal.detach(proc, false) >= 0;
}

bool IClient::getServerInfo(ServerInfo& info) {
    FUNDO_ASSERT_IN(m_internal, __PRETTY_FUNCTION__);
    m_internal->copyTo(info);
    if (info.userName[0] == '\0') CLIENT_LOG_WARN("userName of client is a null string!\n");
    return true;
}

bool IClient::saveUserName(const char* name) {
    FUNDO_ASSERT_IN(m_internal, __PRETTY_FUNCTION__);
    if (!m_internal->saveUserName(name)) CLIENT_LOG_WARN("username of client has already saved.\n");
    return true;
}

bool IClient::getLoginTime(Fundo::CTime& time) {
    FUNDO_ASSERT_IN(m_internal, __PRETTY_FUNCTION__);
    time = m_internal->timeOfLogin();
    return true;
}

bool IClient::abort(int reason) {
    FUNDO_ASSERT_IN(m_internal, __PRETTY_FUNCTION__);
    // One reference for the call, one for the pointer that the procedures see. The last may end the client.
    Detail::CComponentHelper::addRef(this);
    Detail::CComponentHelper::addRef(this);
    const TComPtr<IClient> held(this);
    const TComPtr<IClient> shown(this);
    m_internal->statusSignal(getCustomData(), ClassID(m_internal->clsid.c_str()), shown, statusAborted,
                             reason);
    return logout();
}

void IClient::setCustomData(void* data) {
    FUNDO_ASSERT_IN(m_internal, __PRETTY_FUNCTION__);
    m_internal->customData.store(data, std::memory_order_relaxed);
}

void* IClient::getCustomData() {
    FUNDO_ASSERT_IN(m_internal, __PRETTY_FUNCTION__);
    return m_internal->customData.load(std::memory_order_relaxed);
}

int IClient::getCurrentUserID() {
    void* value = nullptr;
    currentUserSlot().getValue(&value);
    return static_cast<int>(reinterpret_cast<intptr_t>(value));
}

bool Detail::CComponentHelper::setAsCurrentUser(IClient* client) {
    if (client == nullptr) return false;
    int id = -1;
    client->getUserID(id);
    return currentUserSlot().setValue(reinterpret_cast<const void*>(static_cast<intptr_t>(id)));
}

// The state of a client that must have one.
#define CLIENT_STATE(client) stateOf(client, __PRETTY_FUNCTION__, __LINE__)

static ClientInternal& stateOf(IClient* client, const char* function, long line) {
    if (client == nullptr || ClientAccess::slot(client) == nullptr) {
        Fundo::Detail::assertionFailed("client != NULL && client->m_internal != NULL", function, kSource,
                                       line);
    }
    return ClientAccess::of(client);
}

void clientCreateInternal(IClient* client, const ClassID& clsid, const ServerInfo& info, bool madeByUser) {
    if (client == nullptr || ClientAccess::slot(client) != nullptr) {
        Fundo::Detail::assertionFailed("client != NULL && client->m_internal == NULL", __PRETTY_FUNCTION__,
                                       kSource, __LINE__);
    }
    ClientAccess::slot(client) = new ClientInternal(clsid, info, madeByUser);
}

bool clientIsCreated(IClient* client) { return CLIENT_STATE(client).loginState == ClientInternal::kCreated; }

bool clientIsLogined(IClient* client) { return CLIENT_STATE(client).loginState == ClientInternal::kLogined; }

bool clientIsBroken(IClient* client) { return CLIENT_STATE(client).loginState == ClientInternal::kBroken; }

bool clientIsIdle(IClient* client) {
    const ClientInternal& state = CLIENT_STATE(client);
    if (state.loginState != ClientInternal::kCreated || state.madeByUser) return false;
    return Fundo::CTime::getCurrentMilliSecond() - state.lastUsedTime >= kIdleMilliseconds;
}

long clientGetAndMarkUsing(IClient* client) {
    return CLIENT_STATE(client).usingMarked.exchange(1, std::memory_order_acq_rel);
}

bool clientLogin(IClient* client) {
    CLIENT_STATE(client).stamp();
    return client->login();
}

bool clientUpdateBroken(IClient* client) {
    ClientInternal& state = CLIENT_STATE(client);
    state.stamp();
    if (!client->checkBroken()) return false;
    state.loginState.store(ClientInternal::kBroken, std::memory_order_release);
    return true;
}

bool clientIsSameAs(IClient* client, const ClassID& clsid, const ServerInfo& info) {
    const ClientInternal& state = CLIENT_STATE(client);
    return state.hasClass(clsid) && state.hasIdentity(info);
}

bool clientIsSameAs(IClient* client, const ClassID& clsid, int userId) {
    if (!CLIENT_STATE(client).hasClass(clsid)) return false;
    int id = -1;
    client->getUserID(id);
    return id == userId;
}

}  // namespace Tovra::Component

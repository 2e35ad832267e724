#include "Component/ClientInternal.h"

#include <cstring>

#include "Fundo3/MutexGuard.h"

// One table says which texts of a description are copied where, and which of them tell one client from
// another.

namespace Tovra::Component {

namespace {

struct TextField {
    const char* ServerInfo::*source;
    std::string ClientInternal::*copy;
    bool identity;
};

constexpr TextField kTexts[] = {
    {&ServerInfo::address, &ClientInternal::address, true},
    {&ServerInfo::password, &ClientInternal::password, true},
    {&ServerInfo::text1, &ClientInternal::text1, true},
    {&ServerInfo::text2, &ClientInternal::text2, true},
    {&ServerInfo::text3, &ClientInternal::text3, true},
    {&ServerInfo::text4, &ClientInternal::text4, true},
    {&ServerInfo::text5, &ClientInternal::text5, false},
    {&ServerInfo::text6, &ClientInternal::text6, true},
    {&ServerInfo::text7, &ClientInternal::text7, true},
    {&ServerInfo::text8, &ClientInternal::text8, true},
    {&ServerInfo::text9, &ClientInternal::text9, false},
};

const char* orEmpty(const char* text) { return text != nullptr ? text : ""; }

// A request compares with every listed client, and mostly with empty texts. The copies hold no zero byte.
bool equal(const std::string& copy, const char* text) {
    if (text == nullptr) return copy.empty();
    return copy[0] == text[0] && std::strcmp(copy.c_str(), text) == 0;
}

}  // namespace

ClientInternal::ClientInternal(const ClassID& classId, const ServerInfo& info, bool byUser)
    : clsid(orEmpty(classId.name)),
      port(info.port),
      userName(orEmpty(info.userName)),
      flag1(info.flag1),
      flag2(info.flag2),
      flag3(info.flag3),
      flag4(info.flag4 != 0),
      value1(info.value1),
      value2(info.value2),
      value3(info.value3),
      lastUsedTime(Fundo::CTime::getCurrentMilliSecond()),
      madeByUser(byUser) {
    for (const TextField& text : kTexts)
        this->*text.copy = orEmpty(info.*text.source);
}

ClientInternal::~ClientInternal() { delete savedUserName.load(std::memory_order_relaxed); }

const std::string& ClientInternal::currentUserName() const {
    const std::string* saved = savedUserName.load(std::memory_order_acquire);
    return saved != nullptr ? *saved : userName;
}

// Published as a whole, so that a request that compares names meanwhile sees the old one or the new one.
bool ClientInternal::saveUserName(const char* name) {
    const std::string* saved = new std::string(orEmpty(name));
    const std::string* none = nullptr;
    if (savedUserName.compare_exchange_strong(none, saved, std::memory_order_acq_rel)) return true;
    delete saved;
    return false;
}

// Numbers first: they are the cheapest to tell two servers apart.
bool ClientInternal::hasIdentity(const ServerInfo& info) const {
    if (port != info.port || flag1 != info.flag1 || flag2 != info.flag2 || flag3 != info.flag3) return false;
    if (flag4 != (info.flag4 != 0) || value1 != info.value1 || value2 != info.value2) return false;
    if (!equal(currentUserName(), info.userName)) return false;
    for (const TextField& text : kTexts) {
        if (text.identity && !equal(this->*text.copy, info.*text.source)) return false;
    }
    return true;
}

// Contract: only the asked-for id is cut at its ".", so a longer class that begins alike matches too.
bool ClientInternal::hasClass(const ClassID& asked) const {
    const char* mine = clsid.c_str();
    for (const char* name = orEmpty(asked.name); *name != '\0' && *name != '.'; ++name, ++mine) {
        if (*mine != *name) return false;
    }
    return true;
}

void ClientInternal::copyTo(ServerInfo& info) const {
    for (const TextField& text : kTexts)
        info.*text.source = (this->*text.copy).c_str();
    info.userName = currentUserName().c_str();
    info.port = port;
    info.flag1 = flag1;
    info.flag2 = flag2;
    info.flag3 = flag3;
    info.flag4 = flag4;
    info.value1 = value1;
    info.value2 = value2;
    info.value3 = value3;
}

void ClientInternal::stamp() {
    lastUsedTime.store(Fundo::CTime::getCurrentMilliSecond(), std::memory_order_relaxed);
}

void ClientInternal::noteLogin() {
    const Fundo::CTime now = Fundo::CTime::getCurrentTime();
    {
        const Fundo::Detail::MutexGuard<Fundo::CMutex> guard(m_loginTimeMutex);
        m_loginTime = now;
    }
    loginState.store(kLogined, std::memory_order_release);
}

Fundo::CTime ClientInternal::timeOfLogin() {
    const Fundo::Detail::MutexGuard<Fundo::CMutex> guard(m_loginTimeMutex);
    return m_loginTime;
}

}  // namespace Tovra::Component

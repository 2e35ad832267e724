#include "Component/LocalComSelectManager.h"

#include <map>
#include <string>

#include "Component/ComponentFactory.h"
#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"

namespace Tovra::Component {

namespace {

struct Defaults {
    Fundo::CMutex s_mapMutex;
    std::map<std::string, std::string> s_localMap;  // interface id to class id
};

Defaults& defaults() {
    static Fundo::Detail::Immortal<Defaults> s_defaults;
    return *s_defaults;
}

}  // namespace

bool CLocalComSelectManager::setDefaultComponent(const char* iid, const char* clsid) {
    if (iid == nullptr) return false;
    Defaults& known = defaults();
    const Fundo::Detail::MutexGuard<Fundo::CMutex> guard(known.s_mapMutex);
    return known.s_localMap.emplace(iid, clsid).second;
}

Fundo::CString CLocalComSelectManager::getDefaultClassID(const char* iid) {
    if (iid == nullptr) return "";
    Defaults& known = defaults();
    const Fundo::Detail::MutexGuard<Fundo::CMutex> guard(known.s_mapMutex);
    const auto found = known.s_localMap.find(iid);
    return found != known.s_localMap.end() ? found->second.c_str() : ClassID::local.name;
}

}  // namespace Tovra::Component

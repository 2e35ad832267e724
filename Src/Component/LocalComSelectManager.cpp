#include "Component/LocalComSelectManager.h"

#include <map>
#include <string>

#include "Component/ComponentFactory.h"
#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"

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
    known.s_mapMutex.enter();
    const bool inserted = known.s_localMap.emplace(iid, clsid).second;
    known.s_mapMutex.leave();
    return inserted;
}

Fundo::CString CLocalComSelectManager::getDefaultClassID(const char* iid) {
    if (iid == nullptr) return "";
    Fundo::CString clsid = ClassID::local.name;
    Defaults& known = defaults();
    known.s_mapMutex.enter();
    const auto found = known.s_localMap.find(iid);
    if (found != known.s_localMap.end()) clsid = found->second.c_str();
    known.s_mapMutex.leave();
    return clsid;
}

}  // namespace Tovra::Component

#include <dlfcn.h>

#include <cstdio>

#include "Component/Component.h"
#include "Component/UnknownInternal.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Report.h"

// Objects by class name. The lock is let go around every creator and every destroy(), so that both may use
// the registry.

namespace Tovra::Component {

static constexpr char kSource[] = "Src/Component/OldUnknown";

const ServerInfo ServerInfo::none = {};

namespace {

constexpr char kDestroyComponent[] =
    "bool Tovra::Component::destroyComponent(Tovra::Component::IUnknown *, const char *, bool)";

using ComponentMap = std::map<std::string, ComponentInfo>;

// Usable from the initialisers of other sources and to the very end.
ComponentMap& components() {
    static Fundo::Detail::Immortal<ComponentMap> s_map;
    return *s_map;
}

Fundo::CMutex& componentMutex() {
    static Fundo::Detail::Immortal<Fundo::CMutex> s_mutex;
    return *s_mutex;
}

const char* orEmpty(const char* text) { return text != nullptr ? text : ""; }

bool matches(const ComponentInstance& instance, const ServerInfo* info) {
    if (info == nullptr || !instance.hasServerInfo) return info == nullptr && !instance.hasServerInfo;
    return instance.address == orEmpty(info->address) && instance.port == info->port &&
           instance.userName == orEmpty(info->userName) && instance.password == orEmpty(info->password) &&
           instance.flag1 == info->flag1;
}

ComponentInstance describe(IUnknown* object, const ServerInfo* info) {
    if (info == nullptr) return {object, false, "", 0, "", "", 0};
    return {object,
            true,
            orEmpty(info->address),
            info->port,
            orEmpty(info->userName),
            orEmpty(info->password),
            info->flag1};
}

// Takes a reference to the listed object that matches; passes over one whose last release() is under way.
IUnknown* takeListed(const char* clsid, const ServerInfo* info) {
    const auto found = components().find(clsid);
    if (found == components().end()) return nullptr;
    for (const ComponentInstance& instance : found->second.instances) {
        if (!matches(instance, info)) continue;
        UnknownInternal& state = Detail::UnknownAccess::of(instance.object);
        if (!state.increaseUnlessZero()) continue;
        state.claim();
        return instance.object;
    }
    return nullptr;
}

// Calls the class's creator with the lock let go; null without a creator.
IUnknown* callCreator(const char* clsid, const ServerInfo* info) {
    ComponentCreator creator = components()[clsid].creator;
    if (creator == nullptr) creator = getDynamicCreator(clsid);
    if (creator == nullptr) return nullptr;
    componentMutex().leave();
    IUnknown* object = creator(info);
    componentMutex().enter();
    return object;
}

}  // namespace

ComponentMap& s_componentMap = components();
Fundo::CMutex& s_componentMutex = componentMutex();

bool registerComponent(const char* clsid, ComponentCreator creator) {
    componentMutex().enter();
    const auto [entry, inserted] = components().try_emplace(clsid);
    entry->second.creator = creator;
    componentMutex().leave();
    if (!inserted) {
        FUNDO_REPORT(Fundo::Detail::kWarn, "registerComponentCreator creator for '%s' already exist!\n",
                     clsid);
    }
    return true;
}

ComponentCreator getDynamicCreator(const char* clsid) {
    char name[32] = {};
    // Contract: 30 characters are kept, so long class names give cut file and symbol names.
    std::snprintf(name, 31, "./lib%s.so", clsid);
    void*& handle = components()[clsid].libraryHandle;
    if (handle == nullptr) handle = ::dlopen(name, RTLD_LAZY);
    if (handle == nullptr) return nullptr;

    std::snprintf(name, 31, "create%sObject", clsid);
    void* symbol = ::dlsym(handle, name);
    if (symbol == nullptr) {
        const char* error = ::dlerror();
        FUNDO_REPORT(Fundo::Detail::kError, "getDynamicCreator get proc '%s' failed for '%s'!\n", name,
                     orEmpty(error));
    }
    return reinterpret_cast<ComponentCreator>(symbol);
}

IUnknown* getComponentInstance(const char* clsid, const ServerInfo* info) {
    componentMutex().enter();
    IUnknown* object = takeListed(clsid, info);
    if (object == nullptr) {
        object = callCreator(clsid, info);
        if (object != nullptr) {
            components()[clsid].instances.push_back(describe(object, info));
            UnknownInternal& state = Detail::UnknownAccess::of(object);
            state.isInstance = true;
            state.componentName = clsid;
        }
    }
    componentMutex().leave();
    return object;
}

IUnknown* createComponentObject(const char* clsid, const ServerInfo* info) {
    componentMutex().enter();
    IUnknown* object = callCreator(clsid, info);
    if (object != nullptr) Detail::UnknownAccess::of(object).componentName = clsid;
    componentMutex().leave();
    return object;
}

bool destroyComponent(IUnknown* object, const char* clsid, bool isInstance) {
    if (isInstance) {
        componentMutex().enter();
        auto pi = components().find(clsid);
        FUNDO_ASSERT_IN(pi != s_componentMap.end(), kDestroyComponent);
        auto pj = (*pi).second.instances.begin();
        while (pj != (*pi).second.instances.end() && pj->object != object)
            ++pj;
        FUNDO_ASSERT_IN(pj != (*pi).second.instances.end(), kDestroyComponent);
        (*pi).second.instances.erase(pj);
        componentMutex().leave();
    }
    object->destroy();
    return true;
}

}  // namespace Tovra::Component

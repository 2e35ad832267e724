#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "Component/ServerInfo.h"
#include "Component/Unknown.h"
#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Mutex.h"

/// @file
/// The registry: objects by class name alone. A class name maps to a creator, registered at run time or found
/// in a shared library named after the class, "./lib<class>.so" in the current directory, that exports
/// "create<class>Object" with C linkage and the type ComponentCreator. File and symbol names are kept to
/// 30 characters, so a class found in this way has a name of at most 18.

namespace Tovra::Component {

/// Makes an object, or gives null. It runs with no lock held and may use the registry itself.
/// @param info as the caller passed it; null if no server is involved
using ComponentCreator = IUnknown* (*)(const ServerInfo* info);

/// A shared object of a class, with the part of the server's description that tells it from others.
struct ComponentInstance {
    IUnknown* object;      ///< no reference is held
    bool hasServerInfo;    ///< made with a ServerInfo
    std::string address;   ///< copy of ServerInfo::address
    int32_t port;          ///< copy of ServerInfo::port
    std::string userName;  ///< copy of ServerInfo::userName
    std::string password;  ///< copy of ServerInfo::password
    int32_t flag1;         ///< copy of ServerInfo::flag1
};

/// What the registry knows of a class.
struct ComponentInfo {
    ComponentCreator creator = nullptr;      ///< null until one is registered
    std::list<ComponentInstance> instances;  ///< live shared objects in order of making
    void* libraryHandle = nullptr;           ///< null until the library is open; never closed
};

/// Every class that was ever registered or asked for; read it under s_componentMutex. Never destroyed.
extern FUNDO_API std::map<std::string, ComponentInfo>& s_componentMap;
/// Guards s_componentMap. Held neither while a creator runs nor while an object ends.
extern FUNDO_API Fundo::CMutex& s_componentMutex;

/// Registers a creator for a class. The last one registered wins; a second one is logged. @return true
FUNDO_API bool registerComponent(const char* clsid, ComponentCreator creator);

/// The creator that the class's library exports, opening the library first if need be; null, logged if the
/// symbol is missing. Call it with s_componentMutex held.
FUNDO_API ComponentCreator getDynamicCreator(const char* clsid);

/// The shared object of a class and server, made on first use. The server counts by address, port, userName,
/// password and flag1. Two threads that miss at once make two objects; later calls get the earlier one.
/// @return an object with one reference for the caller, or null
FUNDO_API IUnknown* getComponentInstance(const char* clsid, const ServerInfo* info);

/// A new object of a class. @return an object with one reference for the caller, or null
FUNDO_API IUnknown* createComponentObject(const char* clsid, const ServerInfo* info);

/// Ends an object of the registry; release() calls it at the last reference. @return true
FUNDO_API bool destroyComponent(IUnknown* object, const char* clsid, bool isInstance);

}  // namespace Tovra::Component

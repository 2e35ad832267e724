#pragma once

#include <string>
#include <vector>

#include "Component/ComPtr.h"
#include "Component/Component.h"
#include "Component/Detail/ComponentHelper.h"
#include "Component/ServerInfo.h"
#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/String.h"

/// @file
/// Factories by interface id and class id, and typed helpers that give counted pointers.

namespace Tovra::Component {

/// Names one implementation of an interface and says where it lives: "Local" for this process, another text
/// for a server's class. A class and a detail may be joined by a ".", such as "Station.main". Owns no text.
struct FUNDO_API ClassID {
    /// Names a class; the text must outlive its use.
    constexpr ClassID(const char* text = nullptr) noexcept : name(text) {}

    const char* name;  ///< the text, not owned

    /// The class id of this process, "Local".
    static const ClassID local;

    /// The class ids under an interface in ascending order of bytes, also those of factories that have been
    /// unregistered.
    static std::vector<std::string> getClassIDs(const char* iid);
};

/// A factory, found by the interface under which it is registered and by its class id. The framework never
/// owns one: unregister it before its end, and mind that a look-up under way may still hold it.
class FUNDO_API IFactoryUnknown {
public:
    virtual ~IFactoryUnknown();
    /// The class of what this factory makes.
    virtual ClassID clsid() const = 0;
    /// A new object, or null.
    virtual IUnknown* create(const ServerInfo& info) = 0;

    /// Registers this factory under an interface, replacing one of the same class silently. @return true
    bool registerFactory(const char* iid);
    /// Blanks the entry of this class under an interface: the class stays listed, requests get null. @return
    /// true
    bool unregisterFactory(const char* iid);
};

/// The class ids under an interface, as ClassID::getClassIDs() gives them, taken at construction.
class FUNDO_API ClassIDList {
public:
    /// @param iid the interface
    explicit ClassIDList(const char* iid);
    ~ClassIDList();
    ClassIDList(const ClassIDList&) = delete;
    ClassIDList& operator=(const ClassIDList&) = delete;

    /// The number of ids.
    int count() const;
    /// A copy of an id; the index is asserted to be in range.
    Fundo::CString operator[](int index) const;

private:
    struct Internal;
    Internal* m_internal;
};

/// Replaces out by the class ids under an interface. Defined for std::string and CString.
template <typename T>
void get_class_ids(const char* iid, std::vector<T>& out);
/// @cond
extern template FUNDO_API void get_class_ids(const char* iid, std::vector<std::string>& out);
extern template FUNDO_API void get_class_ids(const char* iid, std::vector<Fundo::CString>& out);
/// @endcond

/// Registers the texts of the framework's error numbers, once; registerFactory() calls it.
FUNDO_API void initComponent();

namespace Detail {

/// Turns the reference that the framework handed out into a counted pointer. What is of another type gives
/// its reference back.
template <class T>
TComPtr<T> adopt(IUnknown* object) {
    CComponentHelper::makeComponentObject(object);
    T* typed = dynamic_cast<T*>(object);
    if (typed == nullptr) CComponentHelper::release(object);
    return TComPtr<T>(typed);
}

/// A pointer to a factory that holds its client; a factory of another type gives the client back.
template <class T>
TComPtr<T> adoptFactory(IFactoryUnknown* factory, IClient* client) {
    TComPtr<T> result(dynamic_cast<T*>(factory), client);
    return result ? result : TComPtr<T>();
}

}  // namespace Detail

/// A new object of a class as a counted pointer; empty if it cannot be made, with the last error 0x1003000d,
/// or is no T.
template <class T>
TComPtr<T> createComponentObject(const char* clsid, const ServerInfo* info = nullptr) {
    return Detail::adopt<T>(createComponentObject(clsid, info));
}

/// The shared object of a class and server as a counted pointer; empty if it cannot be made, with the last
/// error 0x1003000e, or is no T.
template <class T>
TComPtr<T> getComponentInstance(const char* clsid, const ServerInfo* info = nullptr) {
    IUnknown* object = getComponentInstance(clsid, info);
    if (object != nullptr) return Detail::adopt<T>(object);
    Detail::CComponentHelper::makeComponentInstance(nullptr);  // sets the error
    return {};
}

/// The factory of a class, logged in if its class is remote, as a pointer that holds the client; empty on
/// failure or if it is no T. See Detail::CComponentHelper::getComponentFactory().
template <class T>
TComPtr<T> getComponentFactory(const char* iid, const ClassID& clsid, const ServerInfo& info) {
    IClient* client = nullptr;
    IFactoryUnknown* factory = Detail::CComponentHelper::getComponentFactory(iid, clsid, info, client);
    return Detail::adoptFactory<T>(factory, client);
}

/// The same through a client that exists already, found by its user id.
template <class T>
TComPtr<T> getComponentFactory(const char* iid, const ClassID& clsid, int userId) {
    IClient* client = nullptr;
    IFactoryUnknown* factory = Detail::CComponentHelper::getComponentFactory(iid, clsid, userId, client);
    return Detail::adoptFactory<T>(factory, client);
}

}  // namespace Tovra::Component

#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Component {

class IClient;
class IFactoryUnknown;
class IUnknown;
struct ClassID;
struct ServerInfo;

namespace Detail {

/// The framework's operations on references and factories; TComPtr and the typed helpers are built on them.
/// All may be called on any thread.
class FUNDO_API CComponentHelper {
public:
    /// Claims a fresh object for one owner, without counting.
    /// @return the object; null sets the last error 0x1003000d
    static IUnknown* makeComponentObject(IUnknown* object);
    /// Hands a shared object out: claims the first reference or counts one more. An object of a table is left
    /// alone.
    /// @return the object; null sets the last error 0x1003000e
    static IUnknown* makeComponentInstance(IUnknown* object);
    /// Takes a reference. @return the new count; 0 for null
    static int addRef(IUnknown* object);
    /// Drops a reference; the last one of a client logs it out and takes it from the list of clients.
    /// @return the new count; 0 for null
    static int release(IUnknown* object);
    /// Makes a client's user the current one of the calling thread; null leaves it.
    /// @return false for null or if the platform refused
    static bool setAsCurrentUser(IClient* client);

    /// Finds the factory of a class under an interface. Unless info is the object ServerInfo::none or iid is
    /// "Client", a client comes first: one that equal requests share, logged in on the calling thread if need
    /// be, which takes as long as its login() does.
    /// @param client takes the client, with one reference for the caller, or null
    /// @return the factory, which belongs to whoever registered it; null if the login failed or with the last
    ///         error 0x10030000 (interface) or 0x10030001 (class); for "Client" a wrapper
    static IFactoryUnknown* getComponentFactory(const char* iid, const ClassID& clsid, const ServerInfo& info,
                                                IClient*& client);
    /// The same with a client that exists already, found by its user id; there is no login.
    /// @param userId -1 means that no client is involved
    static IFactoryUnknown* getComponentFactory(const char* iid, const ClassID& clsid, int userId,
                                                IClient*& client);
};

/// CComponentHelper::addRef() and release() of a client, for code that knows IClient by name only.
FUNDO_API void addRefToClient(IClient* client);
/// See addRefToClient().
FUNDO_API void releaseClient(IClient* client);

/// Stops the process for an empty TComPtr that was used.
/// @param function the compiler's text of a function template over the type pointed to, named Y
/// @param line     where in the header
[[noreturn]] FUNDO_API void emptyComPtrUsed(const char* function, int line);

}  // namespace Detail

}  // namespace Tovra::Component

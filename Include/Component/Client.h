#pragma once

#include <string>

#include "Component/ComPtr.h"
#include "Component/ComponentFactory.h"
#include "Component/ServerInfo.h"
#include "Component/Unknown.h"
#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"
#include "Fundo/Fundo3/String.h"
#include "Fundo/Fundo3/Time.h"

namespace Tovra::Component {

struct ClientInternal;

/// What a server sends to challenge a login; only handed through. The strings are a pointer each, null when
/// empty.
struct FUNDO_API ServerChallenge {
    /// One pointer to the characters.
    using String = Fundo::flex_string<char, std::char_traits<char>, std::allocator<char>,
                                      Fundo::MiniStringStorage<char, std::allocator<char>>>;

    String text1;        ///< the client's
    String text2;        ///< the client's
    String text3;        ///< the client's
    String text4;        ///< the client's
    String text5;        ///< the client's
    int32_t value1 = 0;  ///< the client's
    int32_t value2 = 0;  ///< the client's
    int64_t value3 = 0;  ///< the client's
};

/// One login to one server. Concrete classes do the talking; the library keeps the copy of the server's
/// description, the login state, the times, the status signal and the current user of each thread.
///
/// A client is made by a factory (IClient::IFactory), listed, and logged in when a remote interface is first
/// asked for. Equal requests share it. No thread watches the connection: a request asks checkBroken(), and
/// logs in again if it says yes.
///
///   state    event in a request                      next
///   created  login() true / false                    logined / created
///   logined  checkBroken() false                     logined
///   logined  checkBroken() true, login() true/false  logined / broken
///   broken   login() true / false                    logined / broken
///
/// Two threads that ask for one server at once can both run login() on one client; a concrete class must
/// allow for that. The end of a client is always logout(), then destroy(). Drop its references through
/// Detail::CComponentHelper::release() or TComPtr alone.
class FUNDO_API IClient : public IUnknown {
public:
    class IFactory;

    /// What has become of a client.
    enum Status {
        statusConnected = 0,  ///< for concrete clients to report
        statusBroken = 1,     ///< for concrete clients to report
        statusAborted = 2     ///< abort() was called
    };

    /// A procedure told of a client's status: custom data, class id, client, status, reason.
    using StatusProc = Fundo::TFunction5<void, void*, ClassID, TComPtr<IClient>, Status, int>;

    IClient();
    ~IClient() override;

    virtual bool checkBroken() = 0;       ///< Whether the connection has broken.
    virtual bool login() = 0;             ///< Logs in, leaving the reason of a failure as last error.
    virtual bool logout() = 0;            ///< Logs out; called by abort() and before the end.
    virtual bool getUserID(int& id) = 0;  ///< Tells the user id.

    // The defaults of these give false with the last error 0x10030010.
    virtual bool checkAuthority(const std::string& authority);                    ///< For concrete clients.
    virtual bool getCurrentTime(Fundo::CTime& time);                              ///< For concrete clients.
    virtual bool setCurrentTime(const Fundo::CTime& time, int toleranceSeconds);  ///< For concrete clients.
    virtual bool loginAgain(const ServerInfo& info);                              ///< For concrete clients.
    virtual bool checkAuthorityString(const char* authority);                     ///< For concrete clients.
    virtual bool loginFirst();                                                    ///< For concrete clients.
    virtual bool getChallenge(ServerChallenge& challenge);                        ///< For concrete clients.

    /// Attaches a status procedure; there is room for 8. @return false if it is attached or there is no room
    virtual bool attachStatusProc(StatusProc proc);
    /// Detaches a status procedure without waiting for a call under way. @return false if it was not attached
    virtual bool detachStatusProc(StatusProc proc);

    /// Fills info; its texts point into this client and are valid while it lives and saveUserName() has not
    /// run. The spare bits of flag4's byte are left alone. An empty user name is logged. @return true
    bool getServerInfo(ServerInfo& info);
    /// Stores the user name that the server knows; the first call counts, later ones are logged. From then on
    /// requests with the old name no longer find this client. @return true
    bool saveUserName(const char* name);
    /// Tells when the last login succeeded. @return true
    bool getLoginTime(Fundo::CTime& time);
    /// Tells the status procedures, on this thread, that the client is aborted, and logs out. The state
    /// stays: the next request learns from checkBroken() what has become of it. The client may end in here.
    /// @return what logout() gave
    bool abort(int reason);
    /// Stores a value of the user's.
    void setCustomData(void* data);
    /// The value of the user's; null at first.
    void* getCustomData();

    /// The user id of the client on whose behalf the calling thread works; 0 if none was set, -1 if the
    /// client gave none.
    static int getCurrentUserID();

private:
    friend struct ClientAccess;
    ClientInternal* m_internal = nullptr;
};

/// A factory of clients. It registers under the interface "Client" with the class prefix that it serves.
class FUNDO_API IClient::IFactory : public IFactoryUnknown {
public:
    /// The listed client of this factory's class with a user id, or null. No reference is counted.
    IClient* instance(int userId);
};

/// Gives a bare client its copy of the server's description; it must not have one. The framework's own step.
FUNDO_API void clientCreateInternal(IClient* client, const ClassID& clsid, const ServerInfo& info,
                                    bool madeByUser);
FUNDO_API bool clientIsCreated(IClient* client);  ///< Whether the client has never been logged in.
FUNDO_API bool clientIsLogined(IClient* client);  ///< Whether the last login succeeded.
FUNDO_API bool clientIsBroken(IClient* client);   ///< Whether a broken connection could not be mended.
/// Whether a client may be swept: never logged in, made by the framework, and not asked for during more than
/// 300000 ms.
FUNDO_API bool clientIsIdle(IClient* client);
/// Marks a client as in use. @return 0 the first time, then 1
FUNDO_API long clientGetAndMarkUsing(IClient* client);
/// Stamps a client as used and calls its login().
FUNDO_API bool clientLogin(IClient* client);
/// Stamps a client as used, calls its checkBroken() and remembers a yes in the state.
FUNDO_API bool clientUpdateBroken(IClient* client);
/// Whether a client serves a class and server: the class id up to its first "." is a leading part of the
/// client's, and all identity fields are equal.
FUNDO_API bool clientIsSameAs(IClient* client, const ClassID& clsid, const ServerInfo& info);
/// Whether a client serves a class, as above, and has a user id.
FUNDO_API bool clientIsSameAs(IClient* client, const ClassID& clsid, int userId);

}  // namespace Tovra::Component

#pragma once

#include "Component/Client.h"
#include "Component/ComPtr.h"
#include "Component/ServerInfo.h"
#include "Component/Unknown.h"
#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/String.h"

namespace Tovra::Component {

/// The application's knowledge of where a channel or a device lives. Its operations may run on any thread.
class FUNDO_API IServerInfoQueryer : public IUnknown {
public:
    /// Tells class id and server of a channel, 0 or above. @return false if it is unknown
    virtual bool getServerInfoByChannel(int channel, Fundo::CString& clsid, ServerInfo& info) = 0;
    /// Tells class id and server of a device id, which is never null. @return false if it is unknown
    virtual bool getServerInfoByDeviceId(const char* deviceId, Fundo::CString& clsid, ServerInfo& info) = 0;
};

/// The process-wide holder of the queryer. It has no lock: set the handler at start-up.
class FUNDO_API CServerInfoQueryerHelper {
public:
    /// The one holder; it releases the handler at process exit.
    static CServerInfoQueryerHelper* instance();

    /// Sets the handler, once for the life of the process. @return false, logged, if one is set or this is
    /// empty
    bool setQueryerHandler(const TComPtr<IServerInfoQueryer>& handler);

    /// Asks the handler. Channel -1, or any channel while there is no handler, is "Local" and leaves info
    /// alone.
    /// @return false, logged, for another negative channel, or what the handler gave
    bool getServerInfoByChannel(int channel, Fundo::CString& clsid, ServerInfo& info);

    /// Asks the handler. @return false, logged, without a handler or for a null id, or what the handler gave
    bool getServerInfoByDeviceId(const char* deviceId, Fundo::CString& clsid, ServerInfo& info);

private:
    CServerInfoQueryerHelper() = default;

    TComPtr<IServerInfoQueryer> m_handler;
};

}  // namespace Tovra::Component

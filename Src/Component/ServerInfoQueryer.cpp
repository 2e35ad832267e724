#include "Component/ServerInfoQueryer.h"

#include "Fundo/Fundo3/PrintLog.h"

namespace Tovra::Component {

CServerInfoQueryerHelper* CServerInfoQueryerHelper::instance() {
    static CServerInfoQueryerHelper s_helper;
    return &s_helper;
}

bool CServerInfoQueryerHelper::setQueryerHandler(const TComPtr<IServerInfoQueryer>& handler) {
    if (m_handler || !handler) {
        Fundo::logError("setQueryerHandler failed setPtr[%p], oldPtr[%p]\n",
                        static_cast<void*>(handler.get()), static_cast<void*>(m_handler.get()));
        return false;
    }
    m_handler = handler;
    return true;
}

bool CServerInfoQueryerHelper::getServerInfoByChannel(int channel, Fundo::CString& clsid, ServerInfo& info) {
    if (channel == -1 || !m_handler) {
        clsid = "Local";
        return true;
    }
    if (channel < 0) {
        Fundo::logError("channel(%d) is invalid \n", channel);
        return false;
    }
    return m_handler->getServerInfoByChannel(channel, clsid, info);
}

bool CServerInfoQueryerHelper::getServerInfoByDeviceId(const char* deviceId, Fundo::CString& clsid,
                                                       ServerInfo& info) {
    if (!m_handler) {
        Fundo::logError("please call setQueryerHandler interface\n");
        return false;
    }
    if (deviceId == nullptr) {
        Fundo::logError("deviceId(%s) is empty \n", "(null)");
        return false;
    }
    return m_handler->getServerInfoByDeviceId(deviceId, clsid, info);
}

}  // namespace Tovra::Component

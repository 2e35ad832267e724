#pragma once

#include <string>
#include <vector>

#include "Component/ServerInfoQueryer.h"

// Which station serves a channel: the channels of the process are those of the stations in turn. A device id
// is a station's port.
class Directory : public Tovra::Component::IServerInfoQueryer {
public:
    // @param stations "PORT:CHANNELS", joined by ","
    Directory(const std::string& stations, std::string user, std::string password);

    // The number of channels of all stations.
    int channels() const;

    bool getServerInfoByChannel(int channel, Tovra::Fundo::CString& clsid,
                                Tovra::Component::ServerInfo& info) override;
    bool getServerInfoByDeviceId(const char* deviceId, Tovra::Fundo::CString& clsid,
                                 Tovra::Component::ServerInfo& info) override;
    void destroy() override { delete this; }
    void reservedOperation() override {}

private:
    struct Station {
        int port;
        int channels;
    };

    void describe(const Station& station, int channel, Tovra::Fundo::CString& clsid,
                  Tovra::Component::ServerInfo& info) const;

    std::vector<Station> m_stations;
    const std::string m_user;
    const std::string m_password;
};

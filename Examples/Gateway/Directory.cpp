#include "Directory.h"

#include <cstdlib>
#include <sstream>
#include <utility>

using namespace Tovra::Component;
using Tovra::Fundo::CString;

Directory::Directory(const std::string& stations, std::string user, std::string password)
    : m_user(std::move(user)), m_password(std::move(password)) {
    std::istringstream words(stations);
    std::string word;
    while (std::getline(words, word, ',')) {
        const size_t colon = word.find(':');
        const int count = colon == std::string::npos ? 1 : std::atoi(word.c_str() + colon + 1);
        m_stations.push_back({std::atoi(word.c_str()), count});
    }
}

int Directory::channels() const {
    int count = 0;
    for (const Station& station : m_stations)
        count += station.channels;
    return count;
}

bool Directory::getServerInfoByChannel(int channel, CString& clsid, ServerInfo& info) {
    for (const Station& station : m_stations) {
        if (channel < station.channels) {
            describe(station, channel, clsid, info);
            return true;
        }
        channel -= station.channels;
    }
    return false;
}

bool Directory::getServerInfoByDeviceId(const char* deviceId, CString& clsid, ServerInfo& info) {
    for (const Station& station : m_stations) {
        if (std::to_string(station.port) != deviceId) continue;
        describe(station, 0, clsid, info);
        return true;
    }
    return false;
}

// The channel goes into a field that tells no clients apart, so that a station's channels share one login.
void Directory::describe(const Station& station, int channel, CString& clsid, ServerInfo& info) const {
    clsid = "Station.main";
    info = {};
    info.address = "127.0.0.1";
    info.port = station.port;
    info.userName = m_user.c_str();
    info.password = m_password.c_str();
    info.value3 = channel;
}

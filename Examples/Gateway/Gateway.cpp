// A gateway that records the channels of stations, and the way of a request through libFundo from end to end.
//
//   FundoGateway --stations PORT:CHANNELS[,PORT:CHANNELS...] [--user NAME] [--password WORD] [--folder DIR]
//                [--log FILE] [--seconds N]
//
// A queryer maps a channel number to a station. A channel asks the component framework for the factory of
// "Station.main", which finds or makes the station's client and logs it in over a socket; all channels of a
// station share one login. The factory gives the channel's stream. A channel's thread receives frames into
// packets of the pool and appends them to a recording; the component "Tally", loaded by its name from
// ./libTally.so, counts them. A broken connection is noticed by the next request, which logs in again.
//
//   threads   the table of running threads      clients   who is logged in
//   timers    the table of armed timers         packets   the pool's free memory
//   drop      ask the stations to break off     quit      end; so do SIGINT and SIGTERM
//   logfilter ...   any command of the print log
//
// With a log file, the log rolls at 4 KiB and keeps two archives. The exit status says whether every frame
// was whole and every channel ended in time.

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Channel.h"
#include "Component/ComponentSelector.h"
#include "Directory.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Fundo3/ThreadManager.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Timer.h"
#include "Memory/PacketManager.h"
#include "StationClient.h"
#include "Support/Console.h"

using namespace Tovra::Component;
using namespace Tovra::Fundo;
using Tovra::Memory::CPacketManager;

static constexpr char kName[] = "gateway";

namespace {

class Gateway {
public:
    Gateway(int channels, const std::string& folder) {
        for (int number = 0; number < channels; ++number)
            m_channels.push_back(std::make_unique<Channel>(number, folder));
        m_shown.resize(m_channels.size());
        m_rates.start({&Gateway::showRates, this}, 1000, 1000, 0, 1000);
        m_supervision.start({&Gateway::supervise, this}, 500, 500, 0, 1000);
    }

    ~Gateway() {
        m_supervision.stopAndWait();
        m_rates.stopAndWait();
    }

    // Lets the channels finish their streams. @return whether they all did in time, with no frame damaged
    bool finish() {
        for (const auto& channel : m_channels)
            channel->cancel();
        const uint64_t end = CTime::getCurrentMilliSecond() + kFinishLimit;
        bool inTime = true;
        uint64_t damaged = 0;
        for (const auto& channel : m_channels) {
            while (!channel->isOver() && CTime::getCurrentMilliSecond() < end)
                CThread::sleep(10);
            inTime = inTime && channel->isOver();
            damaged += channel->damaged();
        }
        return inTime && damaged == 0;
    }

    void showTotals() {
        for (const auto& channel : m_channels) {
            const TallyResult total = channel->result();
            std::printf("channel %d: received %" PRIu64 " frames %" PRIu64
                        " bytes, sizes %zu to %zu, lost %" PRIu64 ", crc errors %" PRIu64 ", opened %d\n",
                        channel->number(), total.frames, total.bytes, total.smallest, total.largest,
                        total.lost, channel->damaged(), channel->opened());
        }
    }

private:
    static constexpr uint64_t kFinishLimit = 8000;  // milliseconds

    void showRates(unsigned long) {
        for (size_t i = 0; i < m_channels.size(); ++i) {
            const TallyResult total = m_channels[i]->result();
            const TallyResult last = m_shown[i];
            m_shown[i] = total;
            FUNDO_LOG_INFO(kName, "channel %zu: %4" PRIu64 " frames/s %5" PRIu64 " KiB/s, lost %" PRIu64 "\n",
                           i, total.frames - last.frames, (total.bytes - last.bytes) / 1024, total.lost);
        }
    }

    void supervise(unsigned long) {
        std::string late;
        if (CThreadManager::instance()->getTimeOutThreads(late)) {
            FUNDO_LOG_ERROR(kName, "past their deadline: %s\n", late.c_str());
        }
    }

    std::vector<std::unique_ptr<Channel>> m_channels;
    std::vector<TallyResult> m_shown;
    CTimer m_rates{"Rates"};
    CTimer m_supervision{"Supervision"};
};

void showClient(StationClient& client) {
    ServerInfo info = {};
    client.getServerInfo(info);
    CTime since;
    client.getLoginTime(since);
    int user = -1;
    client.getUserID(user);
    const char* state = clientIsLogined(&client) ? "logined" : clientIsBroken(&client) ? "broken" : "created";
    FUNDO_LOG_INFO(kName, "client %s@%s:%d user %d %s since %s, %d references, %d logins, %d keep-alives\n",
                   info.userName, info.address, info.port, user, state, since.format("HH:mm:ss").c_str(),
                   getRefCount(&client), client.logins(), client.keepAlives());
}

void dropAll() {
    StationClient::visitAll([](StationClient& client) {
        const bool told = client.askForDrop();
        FUNDO_LOG_WARN(kName, "drop: %s\n", told ? "the station was told" : "not connected");
    });
}

void showPackets() {
    CPacketManager& packets = *CPacketManager::instance();
    FUNDO_LOG_INFO(kName, "packets: %zu of %zu KiB free\n", packets.getFreeSize() / 1024,
                   packets.getBufferSize() / 1024);
    packets.dumpNodes();
}

// Does what a line of the console asks for. @return false to quit
bool obey(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    words >> command;
    if (command == "quit") return false;
    if (obeyShared(command, words)) return true;
    if (command == "clients") {
        StationClient::visitAll(showClient);
    } else if (command == "packets") {
        showPackets();
    } else if (command == "drop") {
        dropAll();
    } else if (!command.empty()) {
        FUNDO_LOG_WARN(kName, "commands: threads, timers, clients, packets, drop, logfilter ..., quit\n");
    }
    return true;
}

// Packets of at most 64 KiB, and room for some of each channel.
void preparePool() {
    CPacketManager::PoolParameter measures;
    measures.totalSize = 4 << 20;
    CPacketManager::config(CPacketManager::PolicyPool, nullptr, &measures);
}

// Registers a factory while it lives.
template <class Factory>
class Registered {
public:
    explicit Registered(const char* iid) : m_iid(iid) { m_factory.registerFactory(iid); }
    ~Registered() { m_factory.unregisterFactory(m_iid); }

private:
    const char* m_iid;
    Factory m_factory;
};

}  // namespace

int main(int argc, char** argv) {
    preparePrint();
    Console console;
    CThreadManager::instance()->registerMainThread();
    const std::string log = option(argc, argv, "--log", "");
    if (!log.empty()) rollLog(log, "4");
    preparePool();
    describeErrors();

    auto* directory =
        new Directory(option(argc, argv, "--stations", ""), option(argc, argv, "--user", "user"),
                      option(argc, argv, "--password", "word"));
    const int channels = directory->channels();
    setQueryerHandler(TComPtr<IServerInfoQueryer>(directory));
    const Registered<StationClientFactory> clients("Client");
    const Registered<StationStreamFactory> streams("Channel");

    Gateway gateway(channels, option(argc, argv, "--folder", "."));
    console.run(obey, std::atoi(option(argc, argv, "--seconds", "0")));
    const bool whole = gateway.finish();
    gateway.showTotals();
    return whole ? 0 : 1;
}

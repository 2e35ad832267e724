// A station for the gateway: a device with channels that streams frames of real bytes.
//
//   FundoStation [--port N] [--port-file FILE] [--channels N] [--user NAME] [--password WORD] [--folder DIR]
//                [--outage MS] [--fault NAME] [--seconds N] [--source FILE]
//   FundoStation --compare RECORDINGS [--channels N] [--folder DIR]
//
// The first form serves until SIGINT, SIGTERM or the end of the time, and writes the port that it listens on
// to a file. The payloads come from the source, by default this very program. The second form compares what a
// gateway has recorded with what the station has sent; its exit status says whether all held.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Compare.h"
#include "Device.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Fundo3/Time.h"
#include "Support/Console.h"

using namespace Tovra::Fundo;

static constexpr char kName[] = "station";

namespace {

std::vector<uint8_t> bytesOf(const char* path) {
    CLfsFile file;
    const uint8_t* bytes = file.load(path);
    if (bytes == nullptr) return {};
    return {bytes, bytes + file.getLength()};
}

// Under another name first, so that whoever waits for the file finds it whole.
bool tellPort(const std::string& path, int port) {
    CLfsFile file;
    const std::string draft = path + ".new";
    if (!file.open(draft.c_str(), CLfsFile::modeWrite | CLfsFile::modeCreate)) return false;
    file.puts((std::to_string(port) + "\n").c_str());
    file.close();
    return CLfsFile::rename(draft.c_str(), path.c_str());
}

int serve(const Device::Options& options, int argc, char** argv) {
    const int ending = endingSignals();
    std::vector<uint8_t> source = bytesOf(option(argc, argv, "--source", "/proc/self/exe"));
    if (source.empty()) {
        FUNDO_LOG_ERROR(kName, "no bytes to send\n");
        return 1;
    }
    Device device(options, std::move(source));
    const int port = device.listen(std::atoi(option(argc, argv, "--port", "0")));
    const std::string portFile = option(argc, argv, "--port-file", "");
    if (port == 0 || (!portFile.empty() && !tellPort(portFile, port))) {
        FUNDO_LOG_ERROR(kName, "cannot listen, or cannot tell where\n");
        return 1;
    }
    FUNDO_LOG_INFO(kName, "%d channels at port %d\n", options.channels, port);
    const int seconds = std::atoi(option(argc, argv, "--seconds", "0"));
    const uint64_t now = CTime::getCurrentMilliSecond();
    device.run(ending, seconds > 0 ? now + static_cast<uint64_t>(seconds) * 1000 : 0);
    device.showTotals();
    close(ending);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    preparePrint();
    Device::Options options;
    options.channels = std::atoi(option(argc, argv, "--channels", "4"));
    options.user = option(argc, argv, "--user", "user");
    options.password = option(argc, argv, "--password", "word");
    options.folder = option(argc, argv, "--folder", ".");
    options.outage = static_cast<uint64_t>(std::atoi(option(argc, argv, "--outage", "800")));
    options.fault = option(argc, argv, "--fault", "");
    const char* recordings = option(argc, argv, "--compare", nullptr);
    if (recordings == nullptr) return serve(options, argc, argv);
    return compareRecordings(options.folder, recordings, options.channels) ? 0 : 1;
}

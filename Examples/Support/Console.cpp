#include "Console.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cstring>
#include <iterator>

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Fundo3/ThreadManager.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/TimerManager.h"

using namespace Tovra::Fundo;

const char* option(int argc, char** argv, const char* name, const char* otherwise) {
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], name) == 0) return argv[i + 1];
    }
    return otherwise;
}

void preparePrint() {
    PrintOptions options{};
    options.noColor = isatty(STDOUT_FILENO) == 0;
    options.noVersion = true;
    setPrintOptions(options);
    setPrintLogLevel(4);
}

void steerLog(std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    setLogFilter(static_cast<int>(words.size()), arguments.data());
}

void rollLog(const std::string& path, const char* kilobytes) {
    steerLog({"-logpath", path});
    steerLog({"-logsavesetting", "bysize", kilobytes, "3"});
}

bool obeyShared(const std::string& command, std::istream& words) {
    if (command == "threads") {
        CThreadManager::instance()->dumpThreads();
    } else if (command == "timers") {
        CTimerManager::instance()->dumpTimers();
    } else if (command == "logfilter") {
        steerLog({std::istream_iterator<std::string>(words), {}});
    } else {
        return false;
    }
    return true;
}

int endingSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    return signalfd(-1, &ending, SFD_CLOEXEC);
}

Console::~Console() { close(m_ending); }

void Console::run(const Obey& obey, int seconds) {
    const uint64_t end = CTime::getCurrentMilliSecond() + static_cast<uint64_t>(seconds) * 1000;
    for (;;) {
        const uint64_t now = CTime::getCurrentMilliSecond();
        if (seconds > 0 && now >= end) return;
        pollfd sources[] = {{m_ending, POLLIN, 0}, {m_hasInput ? STDIN_FILENO : -1, POLLIN, 0}};
        const int wait = seconds > 0 ? static_cast<int>(end - now) : -1;
        if (poll(sources, 2, wait) < 0) continue;
        if (sources[0].revents != 0) return;
        if (sources[1].revents != 0 && !readCommands(obey)) return;
    }
}

bool Console::readCommands(const Obey& obey) {
    char text[512];
    const ssize_t count = read(STDIN_FILENO, text, sizeof text);
    if (count <= 0) {
        m_hasInput = false;
        return true;
    }
    m_input.append(text, static_cast<size_t>(count));
    for (size_t end = m_input.find('\n'); end != std::string::npos; end = m_input.find('\n')) {
        const std::string line = m_input.substr(0, end);
        m_input.erase(0, end + 1);
        if (!obey(line)) return false;
    }
    return true;
}

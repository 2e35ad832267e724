// The system monitor as an application of the old generation writes it: global classes, upper-case methods.
//
//   FundoLegacy [--seconds N] [--period MS] [--log FILE]
//
// Three timers sample this machine's /proc and put what they read in a queue of packets, whose header says
// what they hold. A worker thread takes them out and logs rates. A fourth timer is the watchdog. The console
// takes
//
//   threads   the table of running threads      slow      start a call that misses its deadline
//   timers    the table of armed timers         level N   the log level, 0 to 6
//   quit      end; so do SIGINT and SIGTERM
//
// With a log file, what the worker logs goes there too, with the time in front. A file of 64 KiB makes way
// for a new one; both are listed at the end.

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <sstream>
#include <string>

#include "Fundo/File.h"
#include "Fundo/FileFind.h"
#include "Fundo/Mutex.h"
#include "Fundo/Packet.h"
#include "Fundo/PacketManager.h"
#include "Fundo/PrintLog.h"
#include "Fundo/Semaphore.h"
#include "Fundo/Thread.h"
#include "Fundo/ThreadManager.h"
#include "Fundo/Time.h"
#include "Fundo/TimeRecord.h"
#include "Fundo/Timer.h"
#include "Fundo/TimerManager.h"
#include "MiniFundo/PrintLog.h"
#include "Proc.h"

static constexpr char kName[] = "legacy";

namespace {

enum Kind : int { kCpu, kMemory, kSelf, kEnd };

// A sample as a packet: its kind in the header, its bytes as data.
template <class Sample>
CPacket pack(Kind kind, Sample sample) {
    CPacket packet(static_cast<unsigned long>(sizeof sample));
    packet.SetLength(0);
    packet.PutBuffer(&sample, sizeof sample);
    std::memcpy(packet.GetHeader(), &kind, sizeof kind);
    return packet;
}

Kind kindOf(const CPacket& packet) {
    Kind kind;
    std::memcpy(&kind, packet.GetHeader(), sizeof kind);
    return kind;
}

template <class Sample>
Sample unpack(const CPacket& packet) {
    Sample sample;
    std::memcpy(&sample, packet.GetBuffer(), sizeof sample);
    return sample;
}

// Many producers, one consumer: the semaphore counts the packets, the mutex guards the container.
class PacketQueue {
public:
    void Put(const CPacket& packet) {
        m_mutex.Enter();
        m_packets.push_back(packet);
        m_mutex.Leave();
        m_filled.Post();
    }

    CPacket Take() {
        m_filled.Pend();
        m_mutex.Enter();
        const CPacket packet = m_packets.front();
        m_packets.pop_front();
        m_mutex.Leave();
        return packet;
    }

private:
    CMutex m_mutex{CMutex::normal};
    CSemaphore m_filled{0};
    std::deque<CPacket> m_packets;
};

// Logs lines, and keeps them in a file if there is one.
class Report {
public:
    explicit Report(const std::string& path) : m_path(path) {
        if (!path.empty()) Open();
    }

    void Line(int level, const char* format, ...) __attribute__((format(printf, 3, 4))) {
        char line[256];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(line, sizeof line, format, arguments);
        va_end(arguments);
        logLibName(level, kName, "%s\n", line);
        if (m_file.IsOpened()) Keep(line);
    }

private:
    static constexpr long kLargest = 65536;

    bool Open() { return m_file.Open(m_path.c_str(), CFile::modeWrite | CFile::modeCreate); }

    void Keep(const char* line) {
        char stamp[32];
        CTime::getCurrentTime().format(stamp, "yyyy-MM-dd HH:mm:ss");
        m_file.Puts((std::string(stamp) + " " + line + "\n").c_str());
        if (m_file.GetPosition() < kLargest) return;
        m_file.Close();
        CFile::Rename(m_path.c_str(), (m_path + ".old").c_str());
        Open();
    }

    std::string m_path;
    CFile m_file;
};

class Worker : public CThread {
public:
    Worker(PacketQueue& queue, Report& report)
        : CThread("Worker", 64, 0, 0), m_queue(queue), m_report(report) {}
    // The packets end with the end mark, so this waits until all are shown.
    ~Worker() override {
        while (!IsThreadOver())
            CTime::sleep(1);
    }

    void ThreadProc() override {
        for (CPacket packet = m_queue.Take(); kindOf(packet) != kEnd; packet = m_queue.Take()) {
            if (kindOf(packet) == kCpu) ShowCpu(unpack<CpuSample>(packet));
            if (kindOf(packet) == kMemory) ShowMemory(unpack<MemorySample>(packet));
            if (kindOf(packet) == kSelf) ShowSelf(unpack<SelfSample>(packet));
        }
    }

private:
    void ShowCpu(const CpuSample& now) {
        const CpuSample last = m_last;
        m_last = now;
        if (last.total == 0 || now.total <= last.total) return;
        const double busy =
            100.0 * static_cast<double>(now.busy - last.busy) / static_cast<double>(now.total - last.total);
        m_report.Line(busy > 90 ? 3 : 4, "cpu     %5.1f %% busy", busy);
    }

    void ShowMemory(const MemorySample& now) {
        m_report.Line(4, "memory  %5lu of %lu MiB available",
                      static_cast<unsigned long>(now.availableKb / 1024),
                      static_cast<unsigned long>(now.totalKb / 1024));
    }

    void ShowSelf(const SelfSample& now) {
        m_report.Line(4, "self    %5lu KiB resident, %lu threads", static_cast<unsigned long>(now.residentKb),
                      static_cast<unsigned long>(now.threads));
    }

    PacketQueue& m_queue;
    Report& m_report;
    CpuSample m_last;
};

class Monitor : public CObject {
public:
    Monitor(unsigned int period, const std::string& log) : m_report(log), m_worker(m_queue, m_report) {
        m_worker.CreateThread();
        Start(m_cpuTimer, &Monitor::SampleCpu, period);
        Start(m_memoryTimer, &Monitor::SampleMemory, period);
        Start(m_selfTimer, &Monitor::SampleSelf, period);
        Start(m_watchdog, &Monitor::Watch, 1000);
    }

    // Producers first: when the last timer has stopped, the end mark is the last packet in the queue.
    ~Monitor() {
        m_stopping = true;
        for (CTimer* timer : {&m_slowTimer, &m_watchdog, &m_selfTimer, &m_memoryTimer, &m_cpuTimer})
            timer->StopAndWait();
        m_queue.Put(pack(kEnd, 0));
    }

    // A call of 4 s under a deadline of 0.5 s, so that the watchdog has something to tell.
    void StartSlowCall() {
        m_slowTimer.Start(TFunction1<void, unsigned long>(&Monitor::BeSlow, this), 0UL, 0UL, 4000UL, 500UL);
    }

private:
    void Start(CTimer& timer, void (Monitor::*method)(unsigned int), unsigned int period) {
        timer.Start(this, static_cast<void (CObject::*)(unsigned int)>(method), 0U, period, 0U, 1000U);
    }

    void SampleCpu(unsigned int) { m_queue.Put(pack(kCpu, readCpu())); }
    void SampleMemory(unsigned int) { m_queue.Put(pack(kMemory, readMemory())); }
    void SampleSelf(unsigned int) { m_queue.Put(pack(kSelf, readSelf())); }

    void BeSlow(unsigned long milliseconds) {
        logLibName(3, kName, "slow call: busy for %lu ms\n", milliseconds);
        const uint64_t end = CTime::getCurrentMilliSecond() + milliseconds;
        while (!m_stopping && CTime::getCurrentMilliSecond() < end)
            CTime::sleep(10);
    }

    void Watch(unsigned int) {
        std::string late;
        if (IThreadManager::instance()->GetTimeOutThreads(late))
            logLibName(2, kName, "past their deadline: %s\n", late.c_str());
    }

    std::atomic<bool> m_stopping{false};
    PacketQueue m_queue;
    Report m_report;
    Worker m_worker;
    CTimer m_cpuTimer{"SampleCpu"};
    CTimer m_memoryTimer{"SampleMemory"};
    CTimer m_selfTimer{"SampleSelf"};
    CTimer m_watchdog{"Watchdog"};
    CTimer m_slowTimer{"SlowCall"};
};

void setLevel(int level) { __atomic_store_n(&Fundo_printLogLevel, level, __ATOMIC_RELAXED); }

// Does what a line of the console asks for. @return false to quit
bool obey(const std::string& line, Monitor& monitor) {
    std::istringstream words(line);
    std::string command;
    words >> command;
    if (command == "quit") return false;
    if (command == "threads") {
        IThreadManager::instance()->DumpThreads();
    } else if (command == "timers") {
        ITimerManager::instance()->DumpTimers();
    } else if (command == "slow") {
        monitor.StartSlowCall();
    } else if (int level = 0; command == "level" && words >> level) {
        setLevel(level);
    } else if (!command.empty()) {
        logLibName(3, kName, "commands: threads, timers, slow, level N, quit\n");
    }
    return true;
}

volatile sig_atomic_t s_ended = 0;
void end(int) { s_ended = 1; }

// Reads commands, looking five times a second for the end of the time and for signals, which any thread may
// take. The end of standard input ends nothing.
void runConsole(Monitor& monitor, int seconds) {
    const uint64_t last = CTime::getCurrentMilliSecond() + static_cast<uint64_t>(seconds) * 1000;
    pollfd input{STDIN_FILENO, POLLIN, 0};
    std::string text;
    while (s_ended == 0 && (seconds <= 0 || CTime::getCurrentMilliSecond() < last)) {
        if (poll(&input, 1, 200) <= 0) continue;
        char bytes[512];
        const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0) input.fd = -1;
        text.append(bytes, count > 0 ? static_cast<size_t>(count) : 0);
        for (size_t stop = text.find('\n'); stop != std::string::npos; stop = text.find('\n')) {
            if (!obey(text.substr(0, stop), monitor)) return;
            text.erase(0, stop + 1);
        }
    }
}

void showFiles(const std::string& log) {
    const size_t slash = log.rfind('/');
    const std::string folder = slash == std::string::npos ? "./" : log.substr(0, slash + 1);
    CFileFind file;
    for (bool found = file.findFile((folder + "*").c_str()); found; found = file.findNextFile()) {
        if ((folder + file.getFileName()).find(log) == std::string::npos) continue;
        std::printf("%-48s %8lld bytes\n", file.getFilePath().c_str(), file.getLength());
    }
}

// The word behind an option on the command line, or a default.
const char* option(int argc, char** argv, const char* name, const char* otherwise) {
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], name) == 0) return argv[i + 1];
    }
    return otherwise;
}

}  // namespace

int main(int argc, char** argv) {
    setLevel(4);
    // These restart what they interrupt, so a waiting semaphore takes no harm.
    signal(SIGINT, end);
    signal(SIGTERM, end);

    CTimeRecord stages("start");
    stages.stat(1);
    IPacketManager::config(0x40000, 1024, sizeof(Kind));
    IThreadManager::instance()->RegisterMainThread();
    const std::string log = option(argc, argv, "--log", "");
    const int period = std::atoi(option(argc, argv, "--period", "1000"));
    {
        Monitor monitor(period > 0 ? static_cast<unsigned int>(period) : 1000, log);
        stages.stat(1, "monitor");
        runConsole(monitor, std::atoi(option(argc, argv, "--seconds", "0")));
    }
    if (!log.empty()) showFiles(log);
    return 0;
}

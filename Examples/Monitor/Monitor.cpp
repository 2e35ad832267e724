// A small system monitor, and a first look at libFundo.
//
//   FundoMonitor [--seconds N] [--period MS] [--log FILE]
//
// Three timers sample this machine's /proc on pooled threads and put what they read in a queue. A worker
// thread takes the samples out, computes rates and logs them. A fourth timer is the watchdog: it asks the
// thread table who has missed a deadline. The console takes these commands:
//
//   threads   the table of running threads      slow   start a worker that misses its deadline
//   timers    the table of armed timers         quit   end; so do SIGINT and SIGTERM
//   level N   the log level, 0 to 6                 logfilter ...   any command of the print log
//
// With a log file, the log rolls at 64 KiB and keeps three archives, which are listed at the end with the
// bytes logged by each library.

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <sstream>
#include <string>
#include <vector>

#include "Fundo/Fundo3/FileFind.h"
#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Fundo3/Semaphore.h"
#include "Fundo/Fundo3/ThreadLite.h"
#include "Fundo/Fundo3/ThreadManager.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Timer.h"
#include "Proc.h"
#include "Support/Console.h"

using namespace Tovra::Fundo;

static constexpr char kName[] = "monitor";

namespace {

struct Sample {
    enum Kind { kCpu, kMemory, kSelf, kEnd } kind;
    CpuSample cpu;
    MemorySample memory;
    SelfSample self;
};

// Many producers, one consumer: the semaphore counts the samples, the mutex guards the container.
class SampleQueue {
public:
    void put(const Sample& sample) {
        m_mutex.enter();
        m_samples.push_back(sample);
        m_mutex.leave();
        m_filled.post();
    }

    Sample take() {
        m_filled.pend();
        m_mutex.enter();
        const Sample sample = m_samples.front();
        m_samples.pop_front();
        m_mutex.leave();
        return sample;
    }

private:
    CMutex m_mutex;
    CSemaphore m_filled{0};
    std::deque<Sample> m_samples;
};

class Monitor {
public:
    explicit Monitor(unsigned period)
        : m_worker(TFunction1<void, CThreadLite&>(&Monitor::work, this), "Worker", 64, 0, 0) {
        m_worker.createThread();
        start(m_cpuTimer, &Monitor::sampleCpu, period);
        start(m_memoryTimer, &Monitor::sampleMemory, period);
        start(m_selfTimer, &Monitor::sampleSelf, period);
        start(m_watchdog, &Monitor::watch, 1000);
    }

    // Producers first: when the last timer has stopped, the end mark is the last sample in the queue.
    ~Monitor() {
        m_stopping = true;
        m_slowTimer.stopAndWait();
        m_watchdog.stopAndWait();
        m_selfTimer.stopAndWait();
        m_memoryTimer.stopAndWait();
        m_cpuTimer.stopAndWait();
        m_queue.put({Sample::kEnd, {}, {}, {}});
        while (!m_worker.isThreadOver())
            CThread::sleep(1);
    }

    // A callback of 4 s under a deadline of 0.5 s, so that the watchdog has something to tell.
    void startSlowWorker() { m_slowTimer.start({&Monitor::beSlow, this}, 0, 0, 4000, 500); }

private:
    using Callback = TFunction1<void, unsigned long>;

    void start(CTimer& timer, void (Monitor::*callback)(unsigned long), unsigned period) {
        timer.start(Callback(callback, this), 0, period, 0, 1000);
    }

    void sampleCpu(unsigned long) { m_queue.put({Sample::kCpu, readCpu(), {}, {}}); }
    void sampleMemory(unsigned long) { m_queue.put({Sample::kMemory, {}, readMemory(), {}}); }
    void sampleSelf(unsigned long) { m_queue.put({Sample::kSelf, {}, {}, readSelf()}); }

    void beSlow(unsigned long milliseconds) {
        FUNDO_LOG_WARN(kName, "slow worker: busy for %lu ms\n", milliseconds);
        const uint64_t end = CTime::getCurrentMilliSecond() + milliseconds;
        while (!m_stopping && CTime::getCurrentMilliSecond() < end)
            CThread::sleep(10);
    }

    void watch(unsigned long) {
        std::string late;
        if (CThreadManager::instance()->getTimeOutThreads(late)) {
            FUNDO_LOG_ERROR(kName, "past their deadline: %s\n", late.c_str());
        }
    }

    void work(CThreadLite&) {
        for (Sample sample = m_queue.take(); sample.kind != Sample::kEnd; sample = m_queue.take()) {
            if (sample.kind == Sample::kCpu) showCpu(sample.cpu);
            if (sample.kind == Sample::kMemory) showMemory(sample.memory);
            if (sample.kind == Sample::kSelf) showSelf(sample.self);
        }
    }

    void showCpu(const CpuSample& now) {
        const CpuSample last = m_lastCpu;
        m_lastCpu = now;
        if (last.total == 0 || now.total <= last.total) return;
        const double busy =
            100.0 * static_cast<double>(now.busy - last.busy) / static_cast<double>(now.total - last.total);
        if (busy > 90) {
            FUNDO_LOG_WARN(kName, "cpu     %5.1f %% busy\n", busy);
        } else {
            FUNDO_LOG_INFO(kName, "cpu     %5.1f %% busy\n", busy);
        }
    }

    static void showMemory(const MemorySample& now) {
        FUNDO_LOG_INFO(kName, "memory  %5llu of %llu MiB available\n",
                       static_cast<unsigned long long>(now.availableKb / 1024),
                       static_cast<unsigned long long>(now.totalKb / 1024));
    }

    static void showSelf(const SelfSample& now) {
        FUNDO_LOG_INFO(kName, "self    %5llu KiB resident, %llu threads\n",
                       static_cast<unsigned long long>(now.residentKb),
                       static_cast<unsigned long long>(now.threads));
    }

    SampleQueue m_queue;
    CpuSample m_lastCpu;
    std::atomic<bool> m_stopping{false};
    CThreadLite m_worker;
    CTimer m_cpuTimer{"SampleCpu"};
    CTimer m_memoryTimer{"SampleMemory"};
    CTimer m_selfTimer{"SampleSelf"};
    CTimer m_watchdog{"Watchdog"};
    CTimer m_slowTimer{"SlowWorker"};
};

// Does what a line of the console asks for. @return false to quit
bool obey(const std::string& line, Monitor& monitor) {
    std::istringstream words(line);
    std::string command;
    words >> command;
    if (command == "quit") return false;
    if (obeyShared(command, words)) return true;
    if (command == "slow") {
        monitor.startSlowWorker();
    } else if (int level = 0; command == "level" && words >> level) {
        setPrintLogLevel(level);
    } else if (!command.empty()) {
        FUNDO_LOG_WARN(kName, "commands: threads, timers, slow, level N, logfilter ..., quit\n");
    }
    return true;
}

void openLog(const std::string& path) {
    rollLog(path, "64");
    steerLog({"-logmodulestatistics", "on"});
}

// What the run has left behind: the live file, its archives, and who has logged how much.
void showLog(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "./" : path.substr(0, slash + 1);
    CFileFind file;
    for (bool found = file.findFile((folder + "*").c_str()); found; found = file.findNextFile()) {
        if ((folder + file.getFileName()).find(path) == std::string::npos) continue;
        std::printf("%-48s %8lld bytes\n", file.getFilePath().c_str(), file.getLength());
    }
    for (const auto& [library, info] : getLogStatistics()) {
        std::printf("%-48s %8llu bytes logged\n", library.c_str(),
                    static_cast<unsigned long long>(info.logSize));
    }
}

}  // namespace

int main(int argc, char** argv) {
    preparePrint();
    Console console;
    CThreadManager::instance()->registerMainThread();
    const std::string log = option(argc, argv, "--log", "");
    if (!log.empty()) openLog(log);
    const int period = std::atoi(option(argc, argv, "--period", "1000"));
    {
        Monitor monitor(period > 0 ? static_cast<unsigned>(period) : 1000);
        console.run([&](const std::string& line) { return obey(line, monitor); },
                    std::atoi(option(argc, argv, "--seconds", "0")));
    }
    if (!log.empty()) showLog(log);
    return 0;
}

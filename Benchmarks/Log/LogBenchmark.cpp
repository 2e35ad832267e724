// Lines refused, to standard output, and to the log file. Standard output goes to /dev/null while a case
// runs.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Fundo/Fundo3/PrintLog.h"

#ifdef HAVE_SPDLOG
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>
#endif

using namespace Tovra::Fundo;

namespace {

// Redirects standard output while a case runs.
class SilentOutput {
public:
    SilentOutput() {
        std::fflush(stdout);
        m_kept = dup(STDOUT_FILENO);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        close(null);
    }
    ~SilentOutput() {
        std::fflush(stdout);
        dup2(m_kept, STDOUT_FILENO);
        close(m_kept);
    }

private:
    int m_kept;
};

void setColorless() {
    PrintOptions options{};
    options.noColor = true;
    setPrintOptions(options);
}

void command(std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    setLogFilter(static_cast<int>(words.size()), arguments.data());
}

std::string scratch(const std::string& name) {
    return (std::filesystem::temp_directory_path() / ("fundo-bench-" + name)).string();
}

void refusedByMacro(benchmark::State& state) {
    setPrintLogLevel(3);
    int value = 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        FUNDO_LOG_DEBUG("bench", "value %d\n", value);
    }
}
BENCHMARK(refusedByMacro)->Name("Fundo/Log/refused_macro");

void refusedByFunction(benchmark::State& state) {
    setPrintLogLevel(3);
    int value = 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        logDebug("value %d\n", value);
    }
}
BENCHMARK(refusedByFunction)->Name("Fundo/Log/refused_function");

void toConsole(benchmark::State& state) {
    setColorless();
    const SilentOutput silent;
    for (auto _ : state)
        FUNDO_LOG_ERROR("bench", "value %d of %s\n", 42, "something");
}
BENCHMARK(toConsole)->Name("Fundo/Log/console");

void toFile(benchmark::State& state) {
    std::unique_ptr<SilentOutput> silent;
    if (state.thread_index() == 0) {
        setColorless();
        silent = std::make_unique<SilentOutput>();
        command({"-logpath", scratch("fundo.log")});
        command({"-logsize", "1000000"});
    }
    for (auto _ : state)
        FUNDO_LOG_ERROR("bench", "value %d of %s\n", 42, "something");
    if (state.thread_index() == 0) {
        command({"-logpath", ""});
        logCleanup();
        std::filesystem::remove(scratch("fundo.log"));
    }
}
BENCHMARK(toFile)->Name("Fundo/LogFile/line")->Threads(1)->Threads(2)->Threads(4)->UseRealTime();

// The same line while the file rolls at 1 MiB with ten archives kept.
void toRollingFile(benchmark::State& state) {
    setColorless();
    const SilentOutput silent;
    const std::string folder = scratch("rolling");
    std::filesystem::create_directory(folder);
    command({"-logpath", folder + "/fundo.log"});
    command({"-logsavesetting", "bysize", "1024", "10"});
    for (auto _ : state)
        FUNDO_LOG_ERROR("bench", "value %d of %s\n", 42, "something");
    command({"-logpath", ""});
    command({"-logsavesetting", "none"});
    logCleanup();
    std::filesystem::remove_all(folder);
}
BENCHMARK(toRollingFile)->Name("Fundo/LogFile/rolling")->UseRealTime();

void bareStdio(benchmark::State& state) {
    FILE* file = std::fopen(scratch("stdio.log").c_str(), "a+");
    for (auto _ : state) {
        std::fprintf(
            file, "%s",
            "12:00:00|[bench] [ver:] error LogBenchmark.cpp bareStdio 100 tid:12345 value 42 of something\n");
        std::fflush(file);
    }
    std::fclose(file);
    std::filesystem::remove(scratch("stdio.log"));
}
BENCHMARK(bareStdio)->Name("Stdio/LogFile/line")->Threads(1)->UseRealTime();

#ifdef HAVE_SPDLOG

constexpr char kPattern[] = "%H:%M:%S|[%n] [ver:] %l %s %! %# tid:%t %v";

#define PEER_ERROR(logger, ...) SPDLOG_LOGGER_ERROR(logger, __VA_ARGS__)

void peerRefusedMacro(benchmark::State& state) {
    auto sink = std::make_shared<spdlog::sinks::stdout_sink_st>();
    spdlog::logger logger("bench", sink);
    int value = 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        SPDLOG_LOGGER_CALL((&logger), spdlog::level::debug, "value {}", value);
    }
}
BENCHMARK(peerRefusedMacro)->Name("Spdlog/Log/refused_macro");

void peerRefusedFunction(benchmark::State& state) {
    auto sink = std::make_shared<spdlog::sinks::stdout_sink_st>();
    spdlog::logger logger("bench", sink);
    int value = 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        logger.debug("value {}", value);
    }
}
BENCHMARK(peerRefusedFunction)->Name("Spdlog/Log/refused_function");

// The peer's own sink for standard output flushes every line, which ours leaves to the stream's mode.
class BufferedStdoutSink : public spdlog::sinks::base_sink<std::mutex> {
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t text;
        formatter_->format(message, text);
        std::fwrite(text.data(), 1, text.size(), stdout);
    }
    void flush_() override { std::fflush(stdout); }
};

void peerConsole(benchmark::State& state) {
    const SilentOutput silent;
    spdlog::logger logger("bench", std::make_shared<BufferedStdoutSink>());
    logger.set_pattern(kPattern);
    for (auto _ : state)
        PEER_ERROR((&logger), "value {} of {}", 42, "something");
}
BENCHMARK(peerConsole)->Name("Spdlog/Log/console");

void peerFile(benchmark::State& state) {
    static std::shared_ptr<spdlog::logger> s_logger;
    if (state.thread_index() == 0) {
        s_logger = std::make_shared<spdlog::logger>(
            "bench", std::make_shared<spdlog::sinks::basic_file_sink_mt>(scratch("peer.log")));
        s_logger->set_pattern(kPattern);
        s_logger->flush_on(spdlog::level::trace);
    }
    for (auto _ : state)
        PEER_ERROR(s_logger, "value {} of {}", 42, "something");
    if (state.thread_index() == 0) {
        s_logger.reset();
        std::filesystem::remove(scratch("peer.log"));
    }
}
BENCHMARK(peerFile)->Name("Spdlog/LogFile/line")->Threads(1)->Threads(2)->Threads(4)->UseRealTime();

#endif

}  // namespace

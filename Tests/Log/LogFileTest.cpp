#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "Fundo/Fundo3/PrintLog.h"
#include "Support/Output.h"
#include "Support/TempDir.h"

using namespace Tovra::Fundo;
using Support::Output;

static std::atomic<long> s_clockOffset{0};

// The day of a line without moving the machine's clock: the library's call comes here.
extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval* now, void*) noexcept {
    timespec real;
    ::clock_gettime(CLOCK_REALTIME, &real);
    now->tv_sec = real.tv_sec + s_clockOffset;
    now->tv_usec = real.tv_nsec / 1000;
    return 0;
}

namespace {

void command(std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    setLogFilter(static_cast<int>(words.size()), arguments.data());
}

class LogFile : public testing::Test {
protected:
    LogFile() {
        PrintOptions options{};
        options.noColor = options.noTime = options.noThread = options.noLibName = true;
        options.noVersion = options.noLevel = options.noFunction = true;
        setPrintOptions(options);
        setLogPrinter(TFunction1<void, const char*>(+[](const char*) {}));
        logTo(m_dir.path("app.log"));
    }
    ~LogFile() override { command({"-logpath", ""}); }

    void logTo(const std::string& path) {
        m_path = path;
        command({"-logpath", path});
    }

    static std::vector<std::string> linesOf(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        return lines;
    }

    // The names in the folder, without the live path in front.
    std::vector<std::string> archives() const {
        std::vector<std::string> names;
        for (const auto& entry :
             std::filesystem::directory_iterator(std::filesystem::path(m_path).parent_path())) {
            const std::string name = entry.path().string();
            if (name != m_path) names.push_back(name.substr(std::min(m_path.size(), name.size())));
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    static void logKilobytes(int count) {
        for (int i = 0; i < count; ++i)
            logWarn("%s\n", std::string(1023, 'x').c_str());
    }

    TempDir m_dir;
    std::string m_path;
};

TEST_F(LogFile, KeepsTheLatestLineInTheOldWayWithoutASize) {
    logWarn("one\n");
    logWarn("two\n");
    logWarn("three\n");
    EXPECT_EQ(linesOf(m_path), std::vector<std::string>{"three"});
    command({"-logsize", "1"});
    for (int i = 0; i < 4; ++i)
        logWarn("%s\n", std::string(511, 'x').c_str());
    EXPECT_EQ(std::filesystem::file_size(m_path), 1024U);
}

TEST_F(LogFile, RollsBySizeAndRemovesTheOldest) {
    std::ofstream(m_path) << "former run\n";
    std::ofstream(m_path + ".bak") << "counts too\n";
    std::filesystem::last_write_time(m_path + ".bak",
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    command({"-logsavesetting", "BYSIZE", "1", "3"});
    logKilobytes(3);
    ASSERT_EQ(archives().size(), 3U);  // the former run, and two of this one
    EXPECT_EQ(archives()[0].substr(11), "_0");
    EXPECT_EQ(linesOf(m_path + archives()[0]), std::vector<std::string>{"former run"});
    EXPECT_FALSE(std::filesystem::exists(m_path + ".bak"));
    logKilobytes(3);
    EXPECT_EQ(archives().size(), 3U);
}

TEST_F(LogFile, RollsByDayUnderTheDateOfItsContent) {
    command({"-logsavesetting", "byday", "on", "0"});
    logWarn("today\n");
    logWarn("today too\n");
    s_clockOffset = 86400;
    command({"-logsavesetting", "bysize", "1", "0"});
    logKilobytes(2);
    ASSERT_EQ(archives().size(), 2U);
    EXPECT_EQ(linesOf(m_path + archives()[0]), (std::vector<std::string>{"today", "today too"}));
    EXPECT_NE(archives()[0].substr(0, 11), archives()[1].substr(0, 11));
}

TEST_F(LogFile, LosesNoLineOfManyThreadsWhileItRolls) {
    const auto lineOf = [](int thread, int number) {
        return std::to_string(thread) + " " + std::to_string(number) + std::string(60, 'x');
    };
    command({"-logsavesetting", "bysize", "8", "0"});
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 300; ++i)
                logWarn("%s\n", lineOf(t, i).c_str());
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    int next[8] = {};
    std::vector<std::string> files = archives();
    std::sort(files.begin(), files.end(),
              [](const auto& a, const auto& b) { return std::stoi(a.substr(12)) < std::stoi(b.substr(12)); });
    files.emplace_back();
    EXPECT_NEAR(static_cast<double>(files.size()), 20, 2);
    for (const std::string& file : files) {
        for (const std::string& line : linesOf(m_path + file)) {
            const int thread = std::stoi(line);
            EXPECT_EQ(line, lineOf(thread, next[thread]++));
        }
    }
    for (int count : next)
        EXPECT_EQ(count, 300);
}

TEST_F(LogFile, SurvivesADiskThatFillsUpAndGoesOn) {
    Output output(3);
    signal(SIGXFSZ, SIG_IGN);
    command({"-logsavesetting", "bysize", "100", "2"});
    rlimit size = {3000, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &size);
    logKilobytes(20);
    EXPECT_EQ(std::filesystem::file_size(m_path), 2048U);
    EXPECT_TRUE(archives().empty());
    size.rlim_cur = RLIM_INFINITY;
    setrlimit(RLIMIT_FSIZE, &size);
    logKilobytes(1);
    EXPECT_EQ(linesOf(m_path).size(), 3U);
    EXPECT_NE(output.take().find("fwrite faild,errno:"), std::string::npos);
}

TEST_F(LogFile, TellsWhatFailsAndTriesAgain) {
    Output output(3);
    const std::string folder = m_dir.path("logs");
    logTo(folder + "/app.log");
    logWarn("lost\n");
    std::filesystem::create_directory(folder);
    logWarn("kept\n");
    EXPECT_EQ(linesOf(m_path), std::vector<std::string>{"kept"});
    std::filesystem::rename(m_path, folder + "/moved");
    logCleanup();
    logWarn("reopened\n");
    EXPECT_EQ(linesOf(m_path), std::vector<std::string>{"reopened"});

    command({"-logsavesetting", "bysize", "1", "3"});
    logKilobytes(1);
    logCleanup();
    logKilobytes(1);  // a file just opened takes one line before it rolls
    EXPECT_EQ(linesOf(m_path).size(), 3U);
    std::filesystem::remove_all(folder);
    logKilobytes(2);
    std::filesystem::create_directory(folder);
    logKilobytes(1);
    EXPECT_EQ(linesOf(m_path).size(), 1U);
    logTo(folder + "/");
    logWarn("nowhere\n");
    const std::string told = output.take();
    for (const char* text : {"]fopen faild,errno:2, errmesg:No such file or directory\n",
                             "]logDir is invalid\n", "]no such logpath\n", "]rename faild,errno:2,"})
        EXPECT_NE(told.find(text), std::string::npos) << text;
}

TEST_F(LogFile, LosesNothingUnderPathsThatListingsCut) {
    Output output(3);
    const std::string folder = m_dir.path(std::string(200, 'a') + "/" + std::string(200, 'b'));
    std::filesystem::create_directories(folder);
    logTo(folder + "/app.log");
    command({"-logsavesetting", "bysize", "1", "0"});
    logKilobytes(5);
    EXPECT_EQ(linesOf(m_path).size(), 1U);
    EXPECT_EQ(archives().size(), 4U);
    for (const std::string& archive : archives())
        EXPECT_EQ(linesOf(m_path + archive).size(), 1U);
}

TEST_F(LogFile, StaysInTheLiveFileWhenAnArchivesNameGrowsTooLong) {
    Output output(3);
    const std::string suffix = "_2026-01-01_0";
    logTo(m_dir.path(std::string(NAME_MAX - suffix.size(), 'n')));
    command({"-logsavesetting", "bysize", "1", "0"});
    logKilobytes(13);
    EXPECT_EQ(archives().size(), 10U);
    EXPECT_EQ(linesOf(m_path).size(), 3U);
    EXPECT_NE(output.take().find("]rename faild,errno:36, errmesg:File name too long\n"), std::string::npos);
}

TEST_F(LogFile, DoesNotLogFromInsideItself) {
    // A dangling link ends the listing of the folder, with a warning that must not come back into the file.
    std::filesystem::create_symlink("nowhere", m_dir.path("dangling"));
    command({"-logsavesetting", "bysize", "1", "1"});
    logKilobytes(4);
    EXPECT_EQ(linesOf(m_path).size(), 1U);
}

TEST_F(LogFile, KeepsEveryLineWhoseCallHasReturnedWhenTheProcessIsKilled) {
    auto* returned = static_cast<std::atomic<int>*>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    command({"-logsavesetting", "bysize", "0", "0"});
    const pid_t child = fork();
    if (child == 0) {
        for (int i = 0;; ++i) {
            logWarn("line %d\n", i);
            *returned = i + 1;
        }
    }
    while (*returned < 2000)
        usleep(1000);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const std::vector<std::string> lines = linesOf(m_path);
    ASSERT_GE(static_cast<int>(lines.size()), returned->load());
    for (int i = 0; i < *returned; ++i)
        ASSERT_EQ(lines[static_cast<size_t>(i)], "line " + std::to_string(i));
}

TEST(LogCommands, SteerLevelModulesAndFields) {
    Output output(3);
    command({"-loglevel", "4"});
    EXPECT_EQ(getPrintLogLevel(), 4);
    const auto passes = [](const char* name) { return logFilter(4, name, "", "", 1, "", "x\n") > 0; };
    command({"-logmodule", "mine", "sure"});
    EXPECT_EQ(Fundo_openLog, 1);
    EXPECT_FALSE(passes("mine"));
    EXPECT_TRUE(passes("other"));
    EXPECT_TRUE(passes(nullptr));
    command({"-logmodule", "mine", "ON"});
    EXPECT_TRUE(passes("mine"));
    command({"-logmodule", "off"});
    EXPECT_FALSE(passes("other"));
    command({"-logmodule", "anything"});
    EXPECT_EQ(Fundo_openLog, 2);
    Fundo_getPrintOption()[1] = 1;  // a user of the flat layer alone
    command({"-logtime", "anything"});
    command({"-LOGTHREAD", "off"});
    PrintOptions options{};
    getPrintOptions(&options);
    EXPECT_TRUE(options.noTime);
    EXPECT_FALSE(options.noThread);
    EXPECT_EQ(Fundo_getPrintOption()[0], 1);
    EXPECT_EQ(Fundo_getPrintOption()[1], 1);
    setLogFilter(0, nullptr);
    EXPECT_NE(output.take().find("logfiter -logsavesetting none #log file save in the old way\n"),
              std::string::npos);
}

TEST(LogCommands, CountBytesByLibrary) {
    Output output(3);
    logLibName(3, "early", "not counted\n");
    command({"-logmodulestatistics", "on"});
    const int bytes = logLibName(3, "lib", "counted\n");
    logLibName(4, "lib", "refused\n");
    logLibName(3, "", "nameless\n");
    const auto statistics = getLogStatistics();
    ASSERT_EQ(statistics.size(), 1U);
    EXPECT_EQ(statistics.at("lib").logSize, static_cast<uint64_t>(bytes));
}

}  // namespace

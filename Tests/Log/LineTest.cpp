#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/PrintLog.h"
#include "Support/LogCapture.h"
#include "Support/Output.h"

namespace Log = Tovra::Fundo;
using Support::LogCapture;
using Support::Output;

namespace {

const std::string kTid = std::to_string(Fundo_getCurrentThreadID());

using Options = Log::PrintOptions;

Options setOptions(std::initializer_list<bool Options::*> flags) {
    Options options{};
    for (auto flag : flags)
        options.*flag = true;
    Log::setPrintOptions(options);
    return options;
}

TEST(Line, HasItsFieldsInColourByDefault) {
    Output output(4);
    EXPECT_EQ(Log::logInfo("x=%d\n", 1),
              static_cast<int>(strlen("09:15:00|[libFundo] [ver:] info  tid: x=1\n") + kTid.size()));
    const std::string line = output.take();
    ASSERT_GT(line.size(), 17U);
    EXPECT_EQ(line.substr(0, 8), "\033[32;40m");
    EXPECT_EQ(line.substr(17), "[libFundo] [ver:] info  tid:" + kTid + " x=1\n\033[0m");
    EXPECT_EQ(line[10], ':');
    EXPECT_EQ(line[16], '|');
}

TEST(Line, HasTagsInStructuredForm) {
    setOptions({&Options::noTime, &Options::noColor, &Options::structuredForm});
    Output output(4);
    Log::logFilter(4, "lib", "a/b.cpp", "run", 12, "V1", "m=%s\n", "x");
    Fundo_logFilter(2, "lib", "a/b.cpp", "run", 0, "V1", "flat\n");
    EXPECT_EQ(output.take(), "|T:M:lib|V:V1|L:info |F:b.cpp|f:run|l:12|t:" + kTid +
                                 "|m:m=x\n|T:M:lib|V:V1|L:error |f:run|t:" + kTid + "|m:flat\n");
}

TEST(Line, LeavesOutWhatIsSwitchedOff) {
    Options options = setOptions({&Options::noTime, &Options::noColor, &Options::noLibName, &Options::noLevel,
                                  &Options::noThread, &Options::noVersion, &Options::noFunction,
                                  &Options::noFile, &Options::noLine});
    Options back{};
    Log::getPrintOptions(&back);
    EXPECT_EQ(std::memcmp(&back, &options, sizeof back), 0);
    Output output(3);
    Log::logFilter(3, "lib", "dir/", "f", 5, nullptr, "bare\n");
    options.noFile = options.noLine = false;
    Log::setPrintOptions(options);
    Log::logFilter(3, "lib", "dir/", "f", 5, nullptr, "cut\n");
    Fundo_logFilter(3, "lib", "dir/", "f", 5, "", "whole\n");
    EXPECT_EQ(output.take(), "bare\n 5 cut\ndir/ 5 whole\n");
}

TEST(Line, OfSeveralCallsHasOnePrefixAndOneColour) {
    setOptions({&Options::noTime, &Options::noThread});
    Output output(3);
    Log::logWarn("a");
    EXPECT_EQ(Log::logWarn("%s", ""), 0);
    setOptions({&Options::noColor, &Options::noTime, &Options::noThread});  // the open colour is still closed
    Log::logWarn("b\n");
    Log::logWarn("c\n");
    EXPECT_EQ(output.take(), "\033[33;40m[libFundo] [ver:] warn  ab\n\033[0m[libFundo] [ver:] warn  c\n");
}

TEST(Line, IsCutAtTheEndOfItsBuffer) {
    setOptions({&Options::noColor, &Options::noTime, &Options::noThread});
    Output output(3);
    const int prefix = Log::logWarn("%s", "\n") - 1;
    const auto log = [&](int total) {
        return Log::logWarn("%s\n", std::string(static_cast<size_t>(total - prefix - 1), 'x').c_str());
    };
    EXPECT_EQ(log(8190), 8190);
    EXPECT_EQ(Fundo_returned, 1);
    EXPECT_EQ(log(8191), 8191);
    EXPECT_EQ(Fundo_returned, 0);
    EXPECT_EQ(Log::logWarn("\n"), 1);
    EXPECT_EQ(log(8192), 8192);
    EXPECT_EQ(Fundo_returned, 1);
    EXPECT_EQ(log(20000), 8192);
    EXPECT_GT(Fundo_logFilter(3, "l", nullptr, "", 0, "", "%s", std::string(9000, 'y').c_str()), 9000);
    // Long names never make the room negative.
    const std::string name(9000, 'n');
    EXPECT_EQ(Log::logFilter(3, name.c_str(), name.c_str(), name.c_str(), 1, name.c_str(), "end\n"), 8192);
}

TEST(Gate, RefusesByLevelThenByModule) {
    LogCapture capture(3);
    EXPECT_EQ(Log::logInfo("no\n") + logInfo("no\n"), 0);
    EXPECT_EQ(Log::logLibName(0, "lib", "no\n") + Log::logLibName(7, "lib", "no\n"), 0);
    EXPECT_GT(logWarn("global\n"), 0);
    Log::setPrintLogLevel(-1);
    EXPECT_EQ(Log::logFatal("no\n"), 0);
    Log::setPrintLogLevel(99);
    EXPECT_GT(Log::logDebug("yes\n"), 0);
    __atomic_store_n(&Fundo_openLog, 0, __ATOMIC_RELAXED);
    EXPECT_EQ(Log::logFilter(1, "lib", "", "", 1, "", "no\n"), 0);
    EXPECT_EQ(Fundo_logFilter(1, "lib", nullptr, "", 1, "", "no\n"), 0);
    EXPECT_GT(Log::logInfo("levels pass the module switch\n"), 0);
    EXPECT_EQ(capture.lines().size(), 3U);
}

TEST(Macro, IsOneStatementThatEvaluatesNothingWhileRefused) {
    LogCapture capture(3);
    int evaluated = 0;
    const auto touch = [&] { return ++evaluated; };
    if (evaluated != 0)
        FUNDO_LOG_WARN("lib", "%d\n", touch());
    else
        FUNDO_LOG_INFO("lib", "%d\n", touch());
    EXPECT_EQ(evaluated, 0);
    FUNDO_LOG_ERROR("lib", "%d\n", touch());
    EXPECT_EQ(evaluated, 1);
    EXPECT_EQ(capture.count("LineTest.cpp TestBody"), 1U);
}

using Printer = Log::TFunction1<void, const char*>;
using Proc = Log::TFunction1<bool, const char*>;

std::vector<std::string> s_printed;
void keep(const char* line) { s_printed.emplace_back(line); }
bool refuse(const char* line) {
    s_printed.push_back(std::string("refuse ") + line);
    return false;
}
bool detachOther(const char*) { return Log::detachPrint(Proc(refuse)) == 1; }

TEST(Printer, TakesTheTextButNotTheColours) {
    setOptions({&Options::noTime, &Options::noThread});
    Output output(3);
    Log::setLogPrinter(Printer(keep));
    Log::logWarn("w\n");
    Log::setLogPrinter({});
    Log::logWarn("x\n");
    EXPECT_EQ(s_printed, std::vector<std::string>{"[libFundo] [ver:] warn  w\n"});
    EXPECT_EQ(output.take(), "\033[33;40m\033[0m\033[33;40m[libFundo] [ver:] warn  x\n\033[0m");
}

TEST(Procedures, SeeEveryLineInOrderFromACopyOfTheList) {
    setOptions({&Options::noColor, &Options::noTime, &Options::noThread});
    Output output(3);
    EXPECT_EQ(Log::attachPrint(Proc(detachOther)), 1);
    EXPECT_EQ(Log::attachPrint(Proc(refuse)), 1);
    EXPECT_EQ(Log::attachPrint(Proc(refuse)), 0);
    Log::logWarn("1\n");
    Log::logWarn("2\n");
    EXPECT_EQ(s_printed, std::vector<std::string>{"refuse [libFundo] [ver:] warn  1\n"});
    EXPECT_EQ(Log::detachPrint(Proc(refuse)), 0);
    EXPECT_EQ(Log::detachPrint(Proc(detachOther)), 1);
}

TEST(Procedures, ThatThrowLeaveNoLockBehind) {
    LogCapture capture(3);
    const Proc throwing(+[](const char*) -> bool { throw std::runtime_error("procedure"); });
    Log::attachPrint(throwing);
    EXPECT_THROW(Log::logWarn("1\n"), std::runtime_error);
    EXPECT_EQ(Log::detachPrint(throwing), 1);
    EXPECT_GT(Log::logWarn("2\n"), 0);
    EXPECT_EQ(capture.lines().size(), 2U);
}

TEST(Hex, ShowsRowsOfSixteen) {
    setOptions({&Options::noTime, &Options::noThread, &Options::noColor, &Options::noLibName,
                &Options::noVersion, &Options::noLevel, &Options::noFunction});
    Output output(5);
    unsigned char bytes[512 + 2] = {};
    std::memcpy(bytes, "A{~z", 4);
    Log::dumpHex(bytes, 0);
    Log::dumpHex(bytes, 0x80000000UL);
    DumpHex(bytes, sizeof bytes);
    const std::string text = output.take();
    char row[64];
    std::snprintf(row, sizeof row, "%p: 41 7b 7e 7a 00 ", static_cast<void*>(bytes));
    EXPECT_EQ(text.compare(0, std::strlen(row), row), 0) << text.substr(0, 80);
    EXPECT_NE(text.find("  A..z............\n"), std::string::npos);
    std::snprintf(row, sizeof row, "\n\n%p: 00 00 ", static_cast<void*>(bytes + 512));
    EXPECT_NE(text.find(row), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 47), std::string(3 * 14, ' ') + "  ..\n");
}

TEST(Helpers, CutPathsAndFrameNames) {
    const auto offsetIn = [](std::string path) { return Fundo_reverseEqualOrder(path.data()); };
    EXPECT_EQ(offsetIn("a/b/c"), 4);
    EXPECT_EQ(offsetIn("a/"), -1);
    EXPECT_EQ(offsetIn("c"), -1);
    char out[16] = {};
    EXPECT_EQ(addLibName("", out, 8), 3U);
    EXPECT_EQ(addLibName("library", out, 3), 6U);
    EXPECT_STREQ(out, "[lib] ");
}

TEST(Log, WorksOnASmallStackAndFromManyThreads) {
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 16384), 0);
    pthread_t small;
    const auto log = [](void*) -> void* { return Log::logWarn("small stack\n"), nullptr; };
    ASSERT_EQ(pthread_create(&small, &attributes, log, nullptr), 0);
    pthread_join(small, nullptr);
    pthread_attr_destroy(&attributes);
#endif
    LogCapture capture(3);
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 200; ++i)
                Log::logFilter(2, "lib", "f", "g", t, "", "thread %d line %d\n", t, i);
        });
    }
    for (int i = 0; i < 50; ++i) {
        Log::setPrintOptions(Options{});
        Log::setLogPrinter(i % 2 == 0 ? Printer(+[](const char*) {}) : Printer());
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(capture.lines().size(), 1600U);
    EXPECT_EQ(capture.count("thread 7 line 199\n"), 1U);
}

void logAtExit() { Log::logError("exit handler\n"); }

struct LogsWhenItDies {
    ~LogsWhenItDies() { logAtExit(); }
};

TEST(LogDeathTest, WorksToTheVeryEndOfTheProcess) {
    EXPECT_EXIT(
        {
            std::atexit(logAtExit);
            static LogsWhenItDies early;
            Log::attachPrint(Proc(+[](const char*) { return true; }));
            std::atexit(logAtExit);
            std::thread([] {
                for (;;)
                    Log::logError("still running\n");
            }).detach();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace

#include <strings.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo3/Log/LogFile.h"
#include "Fundo3/Log/ModuleTable.h"
#include "Fundo3/Log/Options.h"

// The command language of setLogFilter(): a table of options. The first row that fits in name and number of
// words is done; anything else is ignored.

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/PrintLog";

namespace {

using Detail::LogFileSettings;

// The texts are searched for, so each stands whole on its line.
// clang-format off
constexpr const char* kUsage[] = {
    "logfilter command usage:",
    "logfilter -loglevel [levelnum](0-no printlevel, 1-fatal, 2-error, 3-warn, 4-info, 5-trace, 6-debug): set log level",
    "logfilter -logmodule [modulename] [on/off] #turn module's log on/off",
    "logfilter -logmodule [on/off] #turn ALL module's log on/off",
    "logfilter -logpath [logpath/] #logger module's log to logpath or cancel logger(by set path to )",
    "logfilter -logmodulestatistics  [on/off] #turn ALL module's logstatistics func on/off",
    "logfiter -logsize [logsize] #log file max size limited to logsize Kbytes",
    "logfiter -logsavesetting bysize [logsize] [maxnumber]#(logsize-log will save as a new file if log's size reaches to logsize),(maxnumber-total log file)",
    "logfiter -logsavesetting byday [on/off] [maxnumber] #(on-log will save as a new file if date changes),(maxnumber-total log file)",
    "logfiter -logsavesetting none #log file save in the old way",
};
// clang-format on

bool is(const char* word, const char* value) { return strcasecmp(word, value) == 0; }

bool isOn(const char* word) { return is(word, "on"); }

// The arguments behind the option, each "" if the caller's vector ends before.
struct Words {
    const char* first;
    const char* second;
    const char* third;
};

void setLevel(const Words& words) { setPrintLogLevel(std::atoi(words.first)); }

void setOneModule(const Words& words) { Detail::setModule(words.first, isOn(words.second)); }

void setAllModules(const Words& words) {
    __atomic_store_n(&Fundo_openLog, is(words.first, "off") ? 0 : 2, __ATOMIC_RELAXED);
}

template <Detail::OptionFlag flag>
void hideUnlessOn(const Words& words) {
    Detail::setOption(flag, !isOn(words.first));
}

void setPath(const Words& words) { LogFileSettings::setPath(words.first); }

void setSize(const Words& words) { LogFileSettings::setSizeLimit(words.first); }

void setStatistics(const Words& words) { Detail::setCounting(isOn(words.first)); }

void setOldWay(const Words& words) {
    if (is(words.first, "none")) LogFileSettings::setRolling(false);
}

void setRolling(const Words& words) {
    if (is(words.first, "byday")) {
        LogFileSettings::setByDay(isOn(words.second));
    } else if (is(words.first, "bysize")) {
        LogFileSettings::setSizeLimit(words.second);
    } else {
        return;
    }
    LogFileSettings::setMaxFiles(words.third);
    LogFileSettings::setRolling(true);
}

constexpr int kAny = INT_MAX;

struct LogCommand {
    const char* name;
    int minWords;  // the option included
    int maxWords;
    void (*apply)(const Words& words);
};

// Contract: the options without a lower bound read their argument whatever the number of words.
constexpr LogCommand s_commands[] = {
    {"-loglevel", 1, kAny, setLevel},
    {"-logmodule", 3, kAny, setOneModule},
    {"-logmodule", 2, 2, setAllModules},
    {"-logtime", 1, kAny, hideUnlessOn<Detail::kNoTime>},
    {"-logthread", 1, kAny, hideUnlessOn<Detail::kNoThread>},
    {"-logversion", 1, kAny, hideUnlessOn<Detail::kNoVersion>},
    {"-logfunction", 1, kAny, hideUnlessOn<Detail::kNoFunction>},
    {"-logpath", 2, kAny, setPath},
    {"-logsize", 1, kAny, setSize},
    {"-logmodulestatistics", 2, 2, setStatistics},
    {"-logsavesetting", 2, 2, setOldWay},
    {"-logsavesetting", 4, 4, setRolling},
};

Words wordsOf(int argc, char** argv) {
    const char* words[3] = {"", "", ""};
    const int last = argc > 2 ? argc : 2;
    for (int i = 1; i < last && i <= 3 && argv[i] != nullptr; ++i)
        words[i - 1] = argv[i];
    return {words[0], words[1], words[2]};
}

}  // namespace

void setLogFilter(int argc, char** argv) {
    if (argc == 0 || (argc == 1 && std::strcmp(argv[0], "-h") == 0)) {
        for (const char* line : kUsage)
            std::puts(line);
        return;
    }
    if (Fundo_getPrintOption() == nullptr) {
        std::printf("[%s:%s:%d]Printlog Error, pPrintOption is NULL.\n", kSource, __FUNCTION__, __LINE__);
    }
    for (const LogCommand& command : s_commands) {
        if (argc < command.minWords || argc > command.maxWords) continue;
        if (std::strcmp(argv[0], command.name) != 0) continue;
        command.apply(wordsOf(argc, argv));
        return;
    }
}

}  // namespace Tovra::Fundo

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <list>
#include <string>
#include <vector>

#include "Fundo/CheckIncludeVersion.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Version.h"
#include "FundoBuild.h"
#include "Support/LogCapture.h"

namespace {

using Row = CCheckIncludeVersion::IncludeVersion;

// Named objects: the report orders and compares addresses of texts.
const char kDoor[] = "URL: git://door/Include/Door";
const char kBell[] = "URL: git://bell/Include/Bell";
const char kFlat[] = "Flat";

// Registered before main, as every library does it, and before the library's own table.
Row s_houseRows[] = {{kDoor, "41"}, {kBell, "100"}};
__attribute__((init_priority(200))) const CCheckIncludeVersion s_house("House", s_houseRows, 2);

template <class Action>
std::string logged(Action action, int level = 3) {
    Support::LogCapture log(level);
    action();
    std::string all;
    for (const std::string& line : log.lines())
        all += line;
    return all;
}

std::string registered(const char* name, const std::vector<Row>& rows, int level = 3) {
    static std::list<std::vector<Row>> s_tables;  // which must stay
    const std::vector<Row>& table = s_tables.emplace_back(rows);
    return logged([&] { CCheckIncludeVersion(name, table.data(), static_cast<int>(table.size())); }, level);
}

std::string loaded(const std::string& name) {
    return logged(
        [&] { EXPECT_NE(dlopen(("./lib" + name + ".so").c_str(), RTLD_NOW), nullptr) << dlerror(); });
}

// What a line of the check begins with, up to its text.
const std::string kLead = "\\[Src/CheckIncludeVersion:[0-9]+\\] this:0x[0-9a-f]+ tid:[0-9]+, ";

std::string line(const std::string& text) { return kLead + text + "\n"; }

// A pattern for parts that follow each other, others between them.
std::string inOrder(const std::vector<std::string>& patterns) {
    std::string all;
    for (const std::string& part : patterns)
        all += ".*" + part;
    return all;
}

void expectIn(const std::string& text, const std::vector<std::string>& patterns) {
    EXPECT_TRUE(testing::internal::RE::PartialMatch(text, testing::internal::RE(inOrder(patterns)))) << text;
}

// Death tests read standard error; the printer takes the lines there, less the blank that a bare prefix is.
void printToError(const char* text) { std::fputs(*text == ' ' ? text + 1 : text, stderr); }

void checkAloud(int level) {
    Tovra::Fundo::PrintOptions bare{};
    bare.noTime = bare.noColor = bare.noLibName = bare.noLevel = bare.noThread = bare.noVersion = true;
    Tovra::Fundo::setPrintOptions(bare);
    Tovra::Fundo::setLogPrinter(Tovra::Fundo::TFunction1<void, const char*>(printToError));
    Tovra::Fundo::setPrintLogLevel(level);
    CCheckIncludeVersion::checkResult();
}

const std::string kStart = line("-+check include report start-+");
const std::string kRule = line("------------------------------------");
const std::string kEnd = line("-+check include report end-+");
const std::string kAbort =
    "assertion \\(m_matchFlag\\) failed in void CCheckIncludeVersionInter::checkResult\\(\\): "
    "Src/CheckIncludeVersion\\(";

TEST(IncludeTables, ThatAgreePassAndAreToldBehindTheGate) {
    EXPECT_EQ(registered("Test", {{"URL: git://door/Include/Door", "41"}, {kFlat, "041"}, {"", "0"}}), "");
    EXPECT_EQ(loaded("LateAgrees"), "");
    expectIn(registered("Told", {{kDoor, "41"}, {kFlat, "041"}}, 4),
             {"check include version:Told\n", "URL: git://door/Include/Door 41\n", "Flat 041\n$"});

    Support::LogCapture log(6);
    CCheckIncludeVersion::checkResult();
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.count("CCheckIncludeVersionInter::checkResult successful\n"), 1U);
}

TEST(IncludeTables, ThatDifferNameBothSidesOfEveryPairOfTheFirstThatDiffers) {
    EXPECT_EQ(registered("Second", {{kFlat, "1"}}), "");
    const std::string text = registered("Late", {{kDoor, "42"}, {kFlat, "2"}, {kBell, "0100"}});
    expectIn(text,
             {line("check include version failed"), line("Late URL: git://door/Include/Door 42"),
              line("House URL: git://door/Include/Door 41"), line("Late URL: git://bell/Include/Bell 0100"),
              line("House URL: git://bell/Include/Bell 100"), line("check include version failed, assert")});
    EXPECT_EQ(text.find("Flat"), std::string::npos);
    // A table that failed is a table all the same.
    expectIn(registered("Fourth", {{kFlat, "1"}}), {line("Late Flat 2")});
}

TEST(IncludeTables, OfTheLibraryNameItsFiveFolders) {
    for (const char* folder : {"Component", "Fundo", "Memory", "MiniFundo", "Utils"}) {
        static std::list<std::string> s_urls;
        const std::string& url = s_urls.emplace_back("URL: " FUNDO_SOURCE_ADDRESS "/Include/") += folder;
        expectIn(registered("Test", {{url.c_str(), "999999"}}),
                 {line("Fundo " + url + " " FUNDO_REVISION_TEXT)});
    }
}

TEST(IncludeCheckDeathTest, ReportsMalformedRowsUncomparedAndAborts) {
    const std::string text = registered(
        "Bad", {{kDoor, "42"}, {kBell, ""}, {kFlat, "1M"}, {kFlat, "M1"}, {kFlat, " 1"}, {kFlat, "-1"}});
    expectIn(text, {line("Bad version error"), line("URL: git://bell/Include/Bell "), line("Flat 1M"),
                    line("Flat M1"), line("Flat  1"), line("Flat -1"),
                    line("check include version failed, assert")});
    EXPECT_EQ(text.find("Door"), std::string::npos);
    EXPECT_EXIT(checkAloud(2), testing::KilledBySignal(SIGABRT),
                inOrder({line("CCheckIncludeVersionInter::checkResult error:self error"),
                         kStart + "libname:Bad, url:URL: git://bell/Include/Bell version:\n", "M1\n",
                         "-1\n" + kEnd, kAbort}));
}

// What a library is told is seven characters a row: "Door -r", "Bell -r", "null -r", and of a folder without
// a name all else. Revisions compare by number, URLs by address.
TEST(IncludeCheckDeathTest, SuggestsTheLastRevisionsAndAborts) {
    static const char kBare[] = "URL: git://x/";
    static const char kCopy[] = "URL: git://bell/Include/Bell";
    registered("Current", {{kDoor, "42"}, {kFlat, "6"}, {kBare, "9"}});
    registered("Old", {{kFlat, "5"}, {kBare, "9"}});
    registered("Copy", {{kDoor, "042"}, {kCopy, "99"}});
    EXPECT_EXIT(
        checkAloud(4), testing::KilledBySignal(SIGABRT),
        inOrder({line("CCheckIncludeVersionInter::checkResult error:match error") +
                     "--------include version all start---------\n",
                 "URL: git://door/Include/Door 42\n", "--------include version all end---------\n" + kStart,
                 line("\\[House\\], include version suggest:"), kLead + "\nDoor -rBell -r",
                 line("\\[Fundo\\], include is ok") + kRule + line("\\[Current\\], include is ok") + kRule,
                 line("\\[Old\\], include version suggest:"), kLead + "\nnull -r -r9 gi",
                 line("\\[Copy\\], include is ok") + kRule + kEnd, kAbort}));
}

TEST(IncludeCheckDeathTest, SeesLibrariesThatAreLoadedLate) {
    expectIn(loaded("LateDiffers"),
             {line("LateDiffers URL: git://door/Include/Door 42"),
              line("House URL: git://door/Include/Door 41"), line("check include version failed, assert")});
    EXPECT_TRUE(CVersion::matchEqual("LateDiffers", 1, 2, 3));
    EXPECT_FALSE(CVersion::matchEqual("LateDiffers", 1, 2, 4));
    EXPECT_EXIT(checkAloud(2), testing::KilledBySignal(SIGABRT),
                "\\[LateDiffers\\], include is ok.*" + kAbort);
    expectIn(loaded("LateMalformed"),
             {line("LateMalformed version error"), line("URL: git://door/Include/Door 41M")});
}

}  // namespace

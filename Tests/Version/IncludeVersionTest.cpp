#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
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
std::string logged(Action action) {
    Support::LogCapture log(3);
    action();
    std::string all;
    for (const std::string& line : log.lines())
        all += line;
    return all;
}

std::string registered(const std::vector<Row>& rows, const char* name = "Test") {
    return logged([&] { CCheckIncludeVersion(name, rows.data(), static_cast<int>(rows.size())); });
}

std::string loaded(const char* name) {
    const std::string path = std::string("./lib") + name + ".so";
    return logged([&] { EXPECT_NE(dlopen(path.c_str(), RTLD_NOW), nullptr) << dlerror(); });
}

// What a line of the check begins with, up to its text.
const std::string kLead = "\\[Src/CheckIncludeVersion:[0-9]+\\] this:0x[0-9a-f]+ tid:[0-9]+, ";

// A pattern for lines that follow each other, others between them.
std::string inOrder(const std::vector<std::string>& patterns) {
    std::string all;
    for (const std::string& part : patterns)
        all += (all.empty() ? "" : ".*") + part;
    return all;
}

bool holds(const std::string& text, const std::vector<std::string>& patterns) {
    return testing::internal::RE::PartialMatch(text, testing::internal::RE(inOrder(patterns)));
}

std::string line(const std::string& text) { return kLead + text + "\n"; }

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

TEST(IncludeTables, ThatAgreePassInSilence) {
    std::vector<Row> rows = {{"URL: git://door/Include/Door", "41"}, {kFlat, "041"}, {"", "0"}};
    EXPECT_EQ(registered(rows), "");
    EXPECT_EQ(loaded("LateAgrees"), "");
    std::vector<Row> none;
    EXPECT_EQ(registered(none), "");
    EXPECT_TRUE(CVersion::matchEqual("LateAgrees", 1, 2, 3));
    EXPECT_FALSE(CVersion::matchEqual("LateAgrees", 1, 2, 4));

    Support::LogCapture log(6);
    CCheckIncludeVersion::checkResult();
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.count("CCheckIncludeVersionInter::checkResult successful\n"), 1U);
}

TEST(IncludeTables, AreToldRowByRowBehindTheGate) {
    Support::LogCapture log(4);
    const Row rows[] = {{kDoor, "41"}, {kFlat, "1"}};
    const CCheckIncludeVersion check("Told", rows, 2);
    ASSERT_EQ(log.lines().size(), 3U);
    EXPECT_EQ(log.count("check include version:Told\n"), 1U);
    EXPECT_EQ(log.count("URL: git://door/Include/Door 41\n"), 1U);
    EXPECT_EQ(log.count("Flat 1\n"), 1U);
}

TEST(IncludeTables, ThatDifferNameBothSidesOfEveryPair) {
    std::vector<Row> rows = {{kDoor, "42"}, {kFlat, "1"}, {kBell, "0100"}};
    const std::string text = registered(rows, "Late");
    EXPECT_TRUE(holds(
        text, {line("check include version failed"), line("Late URL: git://door/Include/Door 42"),
               line("House URL: git://door/Include/Door 41"), line("Late URL: git://bell/Include/Bell 0100"),
               line("House URL: git://bell/Include/Bell 100"), line("check include version failed, assert")}))
        << text;
    EXPECT_EQ(text.find("Flat"), std::string::npos);
}

TEST(IncludeTables, AreComparedUpToTheFirstThatDiffers) {
    std::vector<Row> second = {{kFlat, "1"}};
    EXPECT_EQ(registered(second), "");
    std::vector<Row> third = {{kFlat, "2"}, {kDoor, "42"}};
    const std::string text = registered(third);
    EXPECT_TRUE(holds(text, {line("House URL: git://door/Include/Door 41")})) << text;
    EXPECT_EQ(text.find("Flat"), std::string::npos);
    // A table that failed is a table all the same.
    std::vector<Row> fourth = {{kFlat, "1"}};
    EXPECT_TRUE(holds(registered(fourth), {line("Test Flat 2")}));
}

TEST(IncludeTables, ThatAreMalformedNameTheBadRowsAndAreNotCompared) {
    std::vector<Row> rows = {{kDoor, "42"}, {kBell, ""},   {kFlat, "1M"},
                             {kFlat, "M1"}, {kFlat, " 1"}, {kFlat, "-1"}};
    const std::string text = registered(rows, "Bad");
    EXPECT_TRUE(holds(text, {line("Bad version error"), line("URL: git://bell/Include/Bell "),
                             line("Flat 1M"), line("Flat M1"), line("Flat  1"), line("Flat -1"),
                             line("check include version failed, assert")}))
        << text;
    EXPECT_EQ(text.find("Door"), std::string::npos);
}

TEST(IncludeTables, OfTheLibraryNameItsFiveFolders) {
    for (const char* folder : {"Component", "Fundo", "Memory", "MiniFundo", "Utils"}) {
        const std::string url = "URL: " FUNDO_SOURCE_ADDRESS "/Include/" + std::string(folder);
        std::vector<Row> rows = {{url.c_str(), "999999"}};
        const std::string text = registered(rows);
        EXPECT_TRUE(holds(text, {line("Fundo " + url + " " FUNDO_REVISION_TEXT)})) << text;
    }
}

TEST(IncludeTables, OfLibrariesLoadedLateAreChecked) {
    const std::string differs = loaded("LateDiffers");
    EXPECT_TRUE(holds(differs, {line("LateDiffers URL: git://door/Include/Door 42"),
                                line("House URL: git://door/Include/Door 41"),
                                line("check include version failed, assert")}))
        << differs;
    EXPECT_TRUE(CVersion::matchEqual("LateDiffers", 1, 2, 3));
    const std::string malformed = loaded("LateMalformed");
    EXPECT_TRUE(
        holds(malformed, {line("LateMalformed version error"), line("URL: git://door/Include/Door 41M")}))
        << malformed;
}

TEST(IncludeCheckDeathTest, ReportsMalformedRowsAndAborts) {
    std::vector<Row> rows = {{kDoor, "42"}, {kBell, "7M"}};
    registered(rows, "Bad");
    EXPECT_EXIT(
        checkAloud(2), testing::KilledBySignal(SIGABRT),
        inOrder({line("CCheckIncludeVersionInter::checkResult error:self error"),
                 kStart + "libname:Bad, url:URL: git://bell/Include/Bell version:7M\n" + kEnd, kAbort}));
}

// What a library is told is seven characters a row: "Door -r", "Bell -r", "null -r", and of a folder without
// a name all else.
TEST(IncludeCheckDeathTest, SuggestsTheLastRevisionsAndAborts) {
    static const char kBare[] = "URL: git://x/";
    std::vector<Row> current = {{kDoor, "42"}, {kFlat, "6"}, {kBare, "9"}};
    std::vector<Row> old = {{kFlat, "5"}, {kBare, "9"}};
    registered(current, "Current");
    registered(old, "Old");
    EXPECT_EXIT(
        checkAloud(4), testing::KilledBySignal(SIGABRT),
        inOrder({line("CCheckIncludeVersionInter::checkResult error:match error") +
                     "--------include version all start---------\n",
                 "URL: git://door/Include/Door 42\n", "--------include version all end---------\n" + kStart,
                 line("\\[House\\], include version suggest:"), kLead + "\nDoor -rBell -r",
                 line("\\[Fundo\\], include is ok") + kRule + line("\\[Current\\], include is ok") + kRule,
                 line("\\[Old\\], include version suggest:"), kLead + "\nnull -r -r9 gi", kEnd, kAbort}));
}

TEST(IncludeCheckDeathTest, ComparesRevisionsByNumberAndUrlsByAddress) {
    static const char kCopy[] = "URL: git://bell/Include/Bell";
    std::vector<Row> rows = {{kDoor, "041"}, {kCopy, "99"}};
    registered(rows, "Copy");
    EXPECT_EXIT(checkAloud(2), testing::KilledBySignal(SIGABRT),
                inOrder({"error:match error", kStart + line("\\[House\\], include is ok"),
                         line("\\[Copy\\], include is ok") + kRule + kEnd, kAbort}));
}

TEST(IncludeCheckDeathTest, EndsAProcessWhoseLateLibraryDiffers) {
    loaded("LateDiffers");
    EXPECT_EXIT(checkAloud(2), testing::KilledBySignal(SIGABRT),
                "\\[LateDiffers\\], include is ok.*" + kAbort);
}

}  // namespace

#include <sys/sysmacros.h>  // its function-like macros major and minor must not hurt the records

#include "Fundo/Fundo3/Version.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "Fundo/Fundo3/ThreadLite.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Version.h"
#include "FundoBuild.h"
#include "Support/LogCapture.h"

namespace {

using Tovra::Fundo::CTime;
using Tovra::Fundo::SystemTime;
using Record = Tovra::Fundo::CVersion;

// Uses the library before the library's own initialisers run.
struct EarlyBird {
    EarlyBird() { Record::setAppDate("Feb  3 2021"); }

    SystemTime firstDates[2] = {Record::appDate, CVersion::appDate};
    CVersion version{"Early", 3, 1, 4, "15", "Jan  1 2020"};
};
__attribute__((init_priority(200))) const EarlyBird s_early;

using Day = std::array<int, 3>;

Day dayOf(const SystemTime& time) { return {time.year, time.month, time.day}; }

template <class T>
class VersionRecord : public testing::Test {};
using Generations = testing::Types<Record, CVersion>;
TYPED_TEST_SUITE(VersionRecord, Generations, );  // Clang wants the argument

TYPED_TEST(VersionRecord, ReadsTheCompilersDates) {
    // clang-format off
    const std::pair<const char*, Day> cases[] = {
        {"Oct 25 2019", {2019, 10, 25}}, {"Jan  5 2020", {2020, 1, 5}},   {"Dec 31 1999", {1999, 12, 31}},
        {"oct 25 2019", {2019, 13, 25}}, {"Okt 25 2019", {2019, 13, 25}}, {"Mayor", {0, 5, 0}},
        {"May 7", {0, 5, 7}},            {"Ma", {0, 13, 0}},              {"", {0, 13, 0}},
    };
    // clang-format on
    for (const auto& [text, day] : cases) {
        const SystemTime date = TypeParam("x", 1, 2, 3, "4", text).date;
        EXPECT_EQ(dayOf(date), day) << text;
        EXPECT_EQ(date.wday | date.hour | date.minute | date.second | date.isdst, 0) << text;
    }
}

TYPED_TEST(VersionRecord, PrintsItsBannerWithTheNameCut) {
    const std::string name = "0123456789012345678901234567890";
    const TypeParam version((name + "tail").c_str(), 1, 20, 300, "4000", "Mar  9 2024");
    EXPECT_EQ(version.name, name);
    EXPECT_EQ(version.major + version.minor + version.revision, 321);
    Support::LogCapture log(4);
    version.print();
    EXPECT_EQ(log.count("] info "), 1U);
    EXPECT_EQ(log.count("[*] " + name + " 1.20.300.4000 Built in 2024/ 3/ 9 [*]\n"), 1U);
}

TYPED_TEST(VersionRecord, AppDateTakesTheDayAlone) {
    TypeParam::appDate = CTime(2030, 5, 6, 7, 8, 9);
    TypeParam::setAppDate("Oct 25 2019");
    EXPECT_EQ(dayOf(TypeParam::appDate), (Day{2019, 10, 25}));
    EXPECT_EQ(TypeParam::appDate.second, 9);
}

TEST(VersionRecords, WorkBeforeAnyInitialiserOfTheLibrary) {
    const SystemTime& first = CTime::minTime;
    for (const SystemTime& date : s_early.firstDates)
        EXPECT_EQ(std::memcmp(&date, &first, sizeof date), 0);
    EXPECT_EQ(dayOf(Record::appDate), (Day{2021, 2, 3}));
    EXPECT_EQ(dayOf(CVersion::appDate), dayOf(first));
    EXPECT_TRUE(CVersion::matchEqual("Early", 3, 1, 4) && CVersion::matchEqual("Fundo2", 2, 0, 0));
    EXPECT_FALSE(CVersion::matchEqual("Early", 3, 1, 5) || CVersion::matchEqual("Fundo2", 2, 0, 1));
}

TEST(RevisionText, IsANumberOrAKeyword) {
    // clang-format off
    const struct {
        const char* text;
        int current, older;
    } cases[] = {
        {"4711", 4711, 4711}, {"4711M", 4711, 4711},     {"$Rev: 4711 $", 4711, 4711}, {"$Revision:4711$", 4711, 4711},
        {":12", 12, 12},      {"4700:4711", 4700, 4711}, {"$Rev: $", 0, 0},            {"exported", 0, 0},
        {"#12", 0, 0},        {" 12", 0, 12},            {"-12", 0, -12},              {"", 0, 0},
    };
    // clang-format on
    for (const auto& entry : cases) {
        EXPECT_EQ(Record("x", 1, 2, 3, entry.text, "").svnRevision, entry.current) << entry.text;
        EXPECT_EQ(CVersion("x", 1, 2, 3, entry.text, "").svnRevision, entry.older) << entry.text;
    }
}

TEST(RevisionText, WithAnMIsToldByTheOlderRecordAlone) {
    Support::LogCapture log(4);
    const Record current("Door", 1, 2, 3, "41M", "");
    const CVersion clean("Door", 1, 2, 3, "41", "");
    EXPECT_TRUE(log.lines().empty());
    const CVersion modified("Door", 1, 2, 3, "41M", "");
    EXPECT_EQ(
        log.count("Some [Door] files are not commit to SVN server. It compied wtih local modified files.\n"),
        1U);
}

TEST(VersionList, MatchesEveryRecordOfTheName) {
    EXPECT_TRUE(CVersion::matchEqual("Gate", 9, 9, 9) && CVersion::matchNotLessThan("Gate", 9, 9, 9));
    const CVersion first("Gate", 2, 5, 7, "1", "");
    const struct {
        int major, minor, revision;
        bool equal, notLess;
    } cases[] = {{2, 5, 7, true, true},   {1, 9, 9, false, true},  {2, 4, 9, false, true},
                 {2, 5, 8, false, false}, {2, 6, 0, false, false}, {3, 0, 0, false, false}};
    for (const auto& [major, minor, revision, equal, notLess] : cases) {
        EXPECT_EQ(CVersion::matchEqual("gATE", major, minor, revision), equal) << revision;
        EXPECT_EQ(CVersion::matchNotLessThan("gate", major, minor, revision), notLess) << revision;
    }
    const CVersion second("GATE", 2, 5, 8, "1", "");
    EXPECT_FALSE(CVersion::matchEqual("Gate", 2, 5, 7) || CVersion::matchEqual("Gate", 2, 5, 8));
    EXPECT_TRUE(CVersion::matchNotLessThan("Gate", 2, 5, 7));
    EXPECT_FALSE(CVersion::matchNotLessThan("Gate", 2, 5, 8));
}

TEST(VersionList, EntriesOfDifferentNamesAreBelowEachOther) {
    const VersionMatcher a("a", 1, 0, 0);
    const VersionMatcher b("b", 2, 0, 0);
    EXPECT_TRUE(a < b && b < a && a < VersionMatcher("A", 1, 0, 1));
    EXPECT_FALSE(a < VersionMatcher("A", 1, 0, 0));
    EXPECT_EQ(VersionMatcher(nullptr, 1, 0, 0).name, "");
}

TEST(LibraryVersion, IsAnnouncedByTheFirstThreadObjectAlone) {
    Support::LogCapture log(4);
    const Tovra::Fundo::CThreadLite first({}, "first", 64, 0, 0);
    const Tovra::Fundo::CThreadLite second({}, "second", 64, 0, 0);
    EXPECT_EQ(log.count("[*] Fundo 3.0.0." FUNDO_REVISION_TEXT " Built in 20"), 1U);
    EXPECT_EQ(log.lines().size(), 1U);
}

}  // namespace

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "Fundo/Fundo3/Time.h"
#include "Support/GuardedBuffer.h"
#include "Support/LogCapture.h"

using namespace Tovra::Fundo;

namespace {

const char kDefault[] = "yyyy-MM-dd HH:mm:ss";
const CTime kMorning(2024, 3, 5, 7, 8, 9);

CTime at(int hour, int minute) { return {2024, 3, 5, hour, minute, 0}; }

std::string number(int value, size_t width) {
    const std::string text = std::to_string(value);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

std::string shortOrTwo(int value, size_t letters) {
    return letters == 0 ? "" : number(value, letters == 1 ? 1 : 2);
}

int orderOf(const std::string& pattern) {
    const size_t y = pattern.find('y'), M = pattern.find('M'), d = pattern.find('d');
    if (y < M && M < d) return 0;
    if (M < d && d < y) return 1;
    return d < M && M < y ? 2 : 0;
}

// The parts of the date for the first, second and third run.
std::vector<std::string> datesOf(const CTime& time, const std::string& pattern, int order) {
    const auto letters = [&](char c) {
        return static_cast<size_t>(std::count(pattern.begin(), pattern.end(), c));
    };
    const size_t y = letters('y');
    const std::string year = y == 0 ? "" : (y < 3 ? number(time.year % 100, 2) : number(time.year, 4));
    const std::string month = shortOrTwo(time.month, letters('M'));
    const std::string day = shortOrTwo(time.day, letters('d'));
    const std::string orders[][3] = {{year, month, day}, {month, day, year}, {day, month, year}};
    const auto& [first, second, third] = orders[order];
    if (first.empty()) return {second, third, third};
    return {first, second.empty() ? third : second, third};
}

// The language again, by strings and counts instead of a walk.
std::string model(const CTime& time, const std::string& pattern, int flags) {
    const auto dates = datesOf(time, pattern, (flags & 2) != 0 ? orderOf(pattern) : CTime::getDateFormat());
    const bool clock12 = (flags & 4) != 0 ? pattern.find('h') != std::string::npos : CTime::get12Hour();
    const int hour = clock12 ? (time.hour + 11) % 12 + 1 : time.hour;
    std::string text;
    size_t place = 0;
    for (size_t i = 0, run = 0; i < pattern.size(); i += run) {
        const char c = pattern[i];
        const std::string kind = c == 'h' || c == 'H' ? "hH" : std::string(1, c);
        run = std::min(pattern.find_first_not_of(kind, i), pattern.size()) - i;
        if (std::strchr("yMd", c) != nullptr) {
            text += place < 3 ? dates[place++] : "";
        } else if (std::strchr("hHms", c) != nullptr) {
            text += shortOrTwo(c == 'm' ? time.minute : (c == 's' ? time.second : hour), run);
        } else if (c == 't') {
            text.erase(clock12 ? text.size() : text.find_last_not_of(' ') + 1);
            text += clock12 ? (time.hour < 12 ? "AM" : "PM") : "";
        } else {
            const bool common = (flags & 1) == 0 && std::strchr("-./", c) != nullptr;
            text.append(run, common ? CTime::getSeparator() : c);
        }
    }
    return text;
}

}  // namespace

TEST(Pattern, LettersArePlaceholdersOfTheProcessWideOrder) {
    EXPECT_EQ(kMorning.format(kDefault), "2024-03-05 07:08:09");
    EXPECT_EQ(kMorning.format("y-M-d H:m:s"), "24-3-5 7:8:9");
    EXPECT_EQ(kMorning.format("yyy|yyyyy"), "2024|");
    EXPECT_EQ(kMorning.format("M/d"), "3-5");
    EXPECT_EQ(kMorning.format("d"), "");
    EXPECT_EQ(kMorning.format("d/M/yyyy", 1), "2024/3/5");
    EXPECT_EQ(kMorning.format("d/M/yyyy", 7), "5/3/2024");
    EXPECT_EQ(kMorning.format("HH:mm tt"), "07:08");
    EXPECT_EQ(CTime().format(kDefault), "0000-00-00 00:00:00");
    EXPECT_EQ(kMorning.format((std::string(300, '#') + "y").c_str()), std::string(300, '#') + "24");
    CTime wild;
    wild.year = 12345;
    wild.month = -1;
    wild.minute = 123;
    EXPECT_EQ(wild.format("yyyy-MM-dd H:m"), "12345--1-00 0:123");

    CTime::setFormatString("dd/MM/yyyy hh:mm:ss tt");
    EXPECT_EQ(CTime::getFormat(), "dd/MM/yyyy hh:mm:ss tt");
    EXPECT_EQ(kMorning.format(kDefault), "05/03/2024 07:08:09");
    EXPECT_EQ(at(13, 0).format("hh:mm:ss tt"), "01:00:00 PM");
    EXPECT_EQ(at(0, 30).format("hh:mm:ss tt"), "12:30:00 AM");
    EXPECT_EQ(at(12, 0).format("hh:mm:ss tt"), "12:00:00 PM");
    EXPECT_EQ(at(13, 0).format("yyyy.MM.dd HH:mm tt", 7), "2024.03.05 13:00");
}

TEST(Pattern, RandomPatternsPrintAsTheModelSays) {
    std::mt19937 random(7);
    const char alphabet[] = "yMdhHmst -./:x";
    const char* settings[] = {kDefault, "MM.dd.yy h", "d/M/y", "yyyy-MM hh"};
    for (int i = 0; i < 40000; ++i) {
        CTime::setFormatString(settings[random() % 4]);
        std::string pattern(random() % 24, ' ');
        for (char& c : pattern)
            c = alphabet[random() % (sizeof alphabet - 1)];
        const CTime time(static_cast<int>(1970 + random() % 69), static_cast<int>(1 + random() % 12),
                         static_cast<int>(1 + random() % 31), static_cast<int>(random() % 24),
                         static_cast<int>(random() % 60), static_cast<int>(random() % 60));
        const int flags = static_cast<int>(random() % 8);
        const std::string wanted = model(time, pattern, flags);
        ASSERT_EQ(time.format(pattern.c_str(), flags), wanted) << '"' << pattern << "\" flags " << flags;
        const size_t room = random() % (wanted.size() + 2);
        const Tests::CGuardedBuffer buffer(room);
        ASSERT_EQ(time.format(buffer.text(), room, pattern.c_str(), flags), wanted.size());
        if (room > 0) {
            ASSERT_EQ(buffer.text(), wanted.substr(0, room - 1)) << pattern;
        }
    }
}

TEST(Pattern, BadSettingsFallBackAndAreTold) {
    Support::LogCapture log(2);
    CTime::setFormatString("yyyyMMdd");
    EXPECT_EQ(log.count("] tid:"), 1U);
    EXPECT_EQ(log.count(", setFormat separator is invalid,set default separator: - \n"), 1U);
    EXPECT_EQ(CTime::getSeparator(), '-');
    CTime::setFormat("MM.yyyy/dd");
    EXPECT_EQ(log.count(", setFormat dateFormat is invalid,set default separator: ymd \n"), 1U);
    EXPECT_EQ(CTime::getSeparator(), '.');
    EXPECT_EQ(CTime::getDateFormat(), 0);
    CTime::setFormatString("yyyy-MM");
    EXPECT_EQ(log.lines().size(), 2U) << "a year and a month are an order";
    CTime::setFormatString(nullptr);
    EXPECT_EQ(CTime::getFormat(), "");
    EXPECT_EQ(log.lines().size(), 4U);
    kMorning.format(nullptr, kDefault, 0);
    EXPECT_EQ(log.count(", buf is NULL!!\n"), 1U);
    EXPECT_EQ(kMorning.format("MM-yyyy", 2), "2024-03") << "an order that is none prints as year, month, day";
    EXPECT_EQ(log.count("dateFormat is invalid"), 3U);
}

TEST(Parse, ReadsNumbersInThePatternsOrder) {
    CTime time;
    EXPECT_TRUE(time.parse("2024-03-05 13:00:00", kDefault, 0));
    EXPECT_EQ(time, at(13, 0));
    EXPECT_EQ(time.wday, 2);
    EXPECT_TRUE(time.parse("03/05/2024 01:00:00 PM", "MM/dd/yyyy hh:mm:ss tt", 0));
    EXPECT_EQ(time, at(13, 0));
    EXPECT_TRUE(time.parse("in 3.2024 1:2:3", "d M y", 0)) << "the first number is lost, yet counts";
    EXPECT_EQ(time, CTime(2024, 3, 1, 1, 2, 3));
    EXPECT_TRUE(time.parse("5.3.2024 12:30:0 PM", "d M y h", 0));
    EXPECT_EQ(time, at(12, 30));
    EXPECT_TRUE(time.parse("5.3.2024 12:30:0 AM", "d M y h", 0));
    EXPECT_EQ(time, at(0, 30));
    EXPECT_TRUE(time.parse("9.9.9 1:2:3", "MM yyyy dd", 0)) << "no order leaves the date";
    EXPECT_EQ(time, CTime(2024, 3, 5, 1, 2, 3));
    EXPECT_TRUE(time.parse("2024-02-30 00:00:00", kDefault, 0));
    EXPECT_EQ(time.day, 28);
}

TEST(Parse, FailuresZeroTheFieldsAndSayWhy) {
    Support::LogCapture log(2);
    CTime time = kMorning;
    time.isdst = 1;
    EXPECT_FALSE(time.parse("2024-03-05 13:00", kDefault, 0));
    EXPECT_EQ(time, CTime());
    EXPECT_EQ(time.wday, 2);
    EXPECT_EQ(time.isdst, 1);
    EXPECT_EQ(log.count(" tid:"), 1U);
    EXPECT_EQ(log.count(", CTime parser input information is not enough.\n"), 1U);
    EXPECT_FALSE(time.parse("", kDefault, 0));
    EXPECT_FALSE(time.parse("3/5/2024 13:00:00 PM", "M/d/y h", 0));
    EXPECT_EQ(log.count("CTime parser input hour format is not accord with real value format.\n"), 1U);
    EXPECT_FALSE(time.parse("3/5/2024 1:00:00 pm", "M/d/y h", 0));
    EXPECT_EQ(log.count("12 hours time point is unclear.\n"), 1U);
}

TEST(Parse, RandomTextsNeverReachOutside) {
    std::mt19937 random(11);
    const char alphabet[] = "0123456789999 -/:.APMxyd\xff";
    setPrintLogLevel(0);
    for (int i = 0; i < 100000; ++i) {
        const Tests::CGuardedBuffer text(1 + random() % 40);
        for (size_t k = 0; k + 1 < text.size(); ++k)
            text.text()[k] = alphabet[random() % (sizeof alphabet - 1)];
        text.text()[text.size() - 1] = '\0';
        CTime time = kMorning;
        if (time.parse(text.text(), (random() & 1) != 0 ? kDefault : "d M y h", 0)) {
            ASSERT_EQ(CTime(time_t{}, false) + (time - CTime(1970, 1, 1, 0, 0, 0)), time);
        } else {
            ASSERT_EQ(time, CTime());
        }
    }
}

TEST(Value, ComparesAndMovesTheSixFields) {
    CTime other = kMorning;
    other.wday = 6;
    other.isdst = 1;
    EXPECT_TRUE(other == kMorning && !(other < kMorning) && !(kMorning < other));
    EXPECT_EQ((other + 86400).isdst, -1);
    other += 24 * 3600 * 366;
    EXPECT_EQ(other, CTime(2025, 3, 6, 7, 8, 9));
    EXPECT_EQ(other.isdst, 1);
    EXPECT_EQ(other - kMorning, 366 * 86400);
    EXPECT_EQ(kMorning - other, -366 * 86400);
    other -= -1;
    EXPECT_TRUE(other > kMorning && other >= kMorning && kMorning <= other && other != kMorning);
    EXPECT_EQ(CTime(2024, 13, 40, 25, 0, 0), CTime(2024, 12, 31, 23, 59, 59));
    EXPECT_EQ(CTime::minTime.wday, 6);
    EXPECT_EQ(CTime::maxTime.wday, 5);
}

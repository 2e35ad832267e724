// The old date class: the C library's calendar, with the pattern language of the current class and display
// settings of its own.
#include "Fundo/Time.h"

#include <time.h>

#include <climits>

#include "Fundo/Fundo3/Thread.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo3/Report.h"
#include "Fundo3/Time/Calendar.h"
#include "Fundo3/Time/DisplayFormat.h"
#include "Fundo3/Time/Pattern.h"

using namespace Tovra::Fundo::Detail;
using Current = Tovra::Fundo::CTime;
using Display = DisplayFormat<CTime>;

static constexpr char kSource[] = "Src/Time";

namespace {

constexpr char kSeparators[] = {'.', '-', '/'};  // by the numbers that old code gives them

// No field wraps round to a late date.
int lowered(int field, int by) { return field < INT_MIN + by ? INT_MIN : field - by; }

}  // namespace

// Constants, since normalising them at load would settle the zone before main can choose it. No zone skips
// them.
const CTime CTime::minTime(2000, weekday(2000, 1, 1));
const CTime CTime::maxTime(2038, weekday(2038, 1, 1));

CTime::CTime(unsigned long long time) { breakTime(time); }

CTime::CTime(int yearOf, int monthOf, int dayOf, int hourOf, int minuteOf, int secondOf)
    : year(yearOf), month(monthOf), day(dayOf), hour(hourOf), minute(minuteOf), second(secondOf) {
    breakTime(makeTime());
}

unsigned long long CTime::makeTime() const {
    tm fields{};
    fields.tm_year = lowered(year, 1900);
    fields.tm_mon = lowered(month, 1);
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = -1;
    const time_t time = mktime(&fields);
    return time < 0 ? 0 : static_cast<unsigned long long>(time);
}

void CTime::breakTime(unsigned long long time) {
    const auto seconds = static_cast<time_t>(time);
    tm fields{};
    if (localtime_r(&seconds, &fields) == nullptr) return;
    year = fields.tm_year + 1900;
    month = fields.tm_mon + 1;
    day = fields.tm_mday;
    wday = fields.tm_wday;
    hour = fields.tm_hour;
    minute = fields.tm_min;
    second = fields.tm_sec;
}

CTime CTime::operator+(long long seconds) const {
    long long sum = 0;
    if (__builtin_add_overflow(static_cast<long long>(makeTime()), seconds, &sum)) return {};
    return {sum < 0 ? 0 : static_cast<unsigned long long>(sum)};
}

CTime CTime::operator-(long long seconds) const { return seconds == LLONG_MIN ? CTime() : *this + -seconds; }

long long CTime::operator-(const CTime& other) const {
    return static_cast<long long>(makeTime()) - static_cast<long long>(other.makeTime());
}

CTime CTime::getCurrentTime() {
    const Current now = Current::getCurrentTime();
    CTime time;
    time.year = now.year;
    time.month = now.month;
    time.day = now.day;
    time.wday = now.wday;
    time.hour = now.hour;
    time.minute = now.minute;
    time.second = now.second;
    return time;
}

void CTime::setCurrentTime(const CTime& time, int toleranceSeconds) {
    Current::setCurrentTime(Current(time.year, time.month, time.day, time.hour, time.minute, time.second),
                            toleranceSeconds);
}

uint64_t CTime::getCurrentMilliSecond() { return Current::getCurrentMilliSecond(); }

uint64_t CTime::getCurrentMicroSecond() { return Current::getCurrentMicroSecond(); }

void CTime::sleep(int ms) { Tovra::Fundo::CThread::sleep(ms); }

void CTime::setFormat(std::string format) {
    Display::set(format.c_str(), FUNDO_SITE);
    Current::setFormat(format);
}

void CTime::setFormat(int dateFormat, int separator, int hour12) {
    Display::setOrder(dateFormat);
    if (separator >= 0 && separator <= 2) Display::setSeparator(kSeparators[separator]);
    if (hour12 == 0 || hour12 == 1) Display::set12Hour(hour12 == 1);
}

std::string CTime::getFormat() { return Display::text(); }

int CTime::getDateFormat() { return Display::order(); }

int CTime::getDateSeparator() {
    const char separator = getSpliter();
    if (separator == '/') return 2;
    return separator == '-' ? 1 : 0;
}

char CTime::getSpliter() { return Display::separator(); }

bool CTime::get12Hour() { return Display::is12Hour(); }

int CTime::getTimeFormat() { return Display::is12Hour() ? 1 : 0; }

void CTime::format(char* buffer, const char* format) const {
    if (buffer == nullptr) {
        FUNDO_REPORT_STATIC(kError, "buf is NULL!!\n");
        return;
    }
    if (format == nullptr) {
        FUNDO_REPORT_STATIC(kError, "format is NULL!!\n");
        return;
    }
    constexpr size_t kUnlimited = static_cast<size_t>(-1);
    CPatternWriter writer(buffer, kUnlimited);
    const Tovra::Fundo::SystemTime fields{year, month, day, wday, hour, minute, second, -1};
    writePattern(fields, format,
                 {static_cast<DateOrder>(getDateFormat()), get12Hour(), getSpliter(), AbsentParts::kLeftOut},
                 writer);
    writer.finish();
}

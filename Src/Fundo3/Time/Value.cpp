// CTime as a value: construction, arithmetic, order.
#include <tuple>

#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Utc.h"
#include "Fundo3/Time/Calendar.h"

namespace Tovra::Fundo {

namespace {

constexpr SystemTime newYear(int year) { return {year, 1, 1, Detail::weekday(year, 1, 1), 0, 0, 0, -1}; }

unsigned long long moved(const SystemTime& time, long long seconds) {
    return time_to_seconds(time) + static_cast<unsigned long long>(seconds);
}

unsigned long long movedBack(const SystemTime& time, long long seconds) {
    return time_to_seconds(time) - static_cast<unsigned long long>(seconds);
}

auto compared(const SystemTime& time) {
    return std::tie(time.year, time.month, time.day, time.hour, time.minute, time.second);
}

}  // namespace

// Constants, so that no initialiser of another source comes before them.
const CTime CTime::minTime(newYear(2000));
const CTime CTime::maxTime(newYear(2038));

CTime::CTime() : SystemTime{0, 0, 0, 0, 0, 0, 0, -1} {}

CTime::CTime(unsigned long long time) : CTime() { utc_to_time(time, *this); }

CTime::CTime(unsigned long long time, bool toLocal) : CTime() {
    toLocal ? utc_to_time(time, *this) : seconds_to_time(time, *this);
}

CTime::CTime(int year_, int month_, int day_, int hour_, int minute_, int second_)
    : SystemTime{year_, month_, day_, 0, hour_, minute_, second_, -1} {
    normalize_time(*this);
}

unsigned long long CTime::makeTime() const { return time_to_utc(*this); }

void CTime::breakTime(unsigned long long time) { utc_to_time(time, *this); }

unsigned long long CTime::timeToSeconds(const SystemTime& time) { return time_to_seconds(time); }

CTime CTime::operator+(long long seconds) const { return {moved(*this, seconds), false}; }

CTime CTime::operator-(long long seconds) const { return {movedBack(*this, seconds), false}; }

CTime& CTime::operator+=(long long seconds) {
    seconds_to_time(moved(*this, seconds), *this);
    return *this;
}

CTime& CTime::operator-=(long long seconds) {
    seconds_to_time(movedBack(*this, seconds), *this);
    return *this;
}

long long CTime::operator-(const CTime& other) const {
    return static_cast<long long>(time_to_seconds(*this) - time_to_seconds(other));
}

bool CTime::operator<(const CTime& other) const { return compared(*this) < compared(other); }

bool CTime::operator==(const CTime& other) const { return compared(*this) == compared(other); }

}  // namespace Tovra::Fundo

// CTime's reading of a text: six numbers in the order that a pattern names.
#include <cstring>

#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Utc.h"
#include "Fundo3/Report.h"
#include "Fundo3/Time/Pattern.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Time";

namespace {

constexpr int kNumbers = 6;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Contract: a text that does not begin with a digit gives a first number of 0, and digits past 32 bits wrap.
int readNumbers(const char* text, int32_t (&numbers)[kNumbers]) {
    int count = 0;
    while (*text != '\0' && count < kNumbers) {
        uint32_t number = 0;
        while (isDigit(*text))
            number = number * 10 + static_cast<uint32_t>(*text++ - '0');
        numbers[count++] = static_cast<int32_t>(number);
        while (*text != '\0' && !isDigit(*text))
            ++text;
    }
    return count;
}

void setDate(SystemTime& time, Detail::DateOrder order, const int32_t (&numbers)[kNumbers]) {
    struct Places {
        int year, month, day;
    };
    static constexpr Places kPlaces[] = {{0, 1, 2}, {2, 0, 1}, {2, 1, 0}};
    if (order == Detail::kNoOrder) return;
    const Places& places = kPlaces[order];
    time.year = numbers[places.year];
    time.month = numbers[places.month];
    time.day = numbers[places.day];
}

// Null if the hour was made one of 24, else what is wrong.
const char* settle12Hour(int32_t& hour, const char* text) {
    if (hour >= 13) return "CTime parser input hour format is not accord with real value format.\n";
    if (std::strstr(text, "PM") != nullptr) {
        if (hour != 12) hour += 12;
        return nullptr;
    }
    if (std::strstr(text, "AM") == nullptr) return "12 hours time point is unclear.\n";
    if (hour == 12) hour = 0;
    return nullptr;
}

const char* fill(SystemTime& time, const char* text, const char* pattern) {
    int32_t numbers[kNumbers] = {};
    const int count = readNumbers(text, numbers);
    setDate(time, Detail::dateOrderOf(pattern), numbers);
    time.hour = numbers[3];
    time.minute = numbers[4];
    time.second = numbers[5];
    if (count != kNumbers) return "CTime parser input information is not enough.\n";
    return Detail::has12Hour(pattern) ? settle12Hour(time.hour, text) : nullptr;
}

}  // namespace

bool CTime::parse(const char* buf, const char* format, int) {
    const char* const fault = fill(*this, buf, format);
    if (fault == nullptr) {
        normalize_time(*this);
        return true;
    }
    FUNDO_REPORT_THIS(Detail::kError, "%s", fault);
    year = month = day = hour = minute = second = 0;
    return false;
}

}  // namespace Tovra::Fundo

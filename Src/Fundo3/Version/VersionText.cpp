#include "Fundo3/Version/VersionText.h"

#include <cstring>

namespace Tovra::Fundo::Detail {

namespace {

constexpr char kMonths[][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                               "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr size_t kMonthLetters = 3;

int monthOf(const char* text) {
    int month = 1;
    for (const char* name : kMonths) {
        if (std::strncmp(text, name, kMonthLetters) == 0) break;
        ++month;
    }
    return month;
}

}  // namespace

void readDate(const char* text, SystemTime& date) {
    text = orEmpty(text);
    date.month = monthOf(text);
    std::sscanf(text + strnlen(text, kMonthLetters), "%d %d", &date.day, &date.year);
}

}  // namespace Tovra::Fundo::Detail

// CTime's text: the process-wide display format, and the pattern language applied to a value.
#include <atomic>
#include <string>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Utc.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"
#include "Fundo3/Time/Pattern.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Time";

namespace {

struct PatternText {
    CMutex mutex;
    std::string text = "yyyy-MM-dd HH:mm:ss";
};

// Made at first use, so that other sources' initialisers may set the format.
PatternText& s_format() {
    static Detail::Immortal<PatternText> s_text;
    return *s_text;
}

std::atomic<int> s_dateFormat{Detail::kYearMonthDay};
std::atomic<bool> s_12hour{false};
std::atomic<char> s_dateSeparator{'-'};

Detail::DateOrder validOrder(const char* pattern) {
    const Detail::DateOrder order = Detail::dateOrderOf(pattern);
    if (order != Detail::kNoOrder) return order;
    FUNDO_REPORT_STATIC(Detail::kError, "setFormat dateFormat is invalid,set default separator: ymd \n");
    return Detail::kYearMonthDay;
}

Detail::PatternStyle chooseStyle(const char* pattern, int flags) {
    const bool ownOrder = (flags & CTime::ownOrder) != 0;
    const bool own12Hour = (flags & CTime::own12Hour) != 0;
    const bool ownSeparator = (flags & CTime::ownSeparator) != 0;
    return {ownOrder ? validOrder(pattern) : static_cast<Detail::DateOrder>(CTime::getDateFormat()),
            own12Hour ? Detail::has12Hour(pattern) : CTime::get12Hour(),
            ownSeparator ? '\0' : CTime::getSeparator()};
}

size_t write(const CTime& time, Detail::CPatternWriter writer, const char* format, int flags) {
    Detail::writePattern(time, format, chooseStyle(format, flags), writer);
    return writer.finish();
}

}  // namespace

void CTime::setFormatString(const char* format) {
    const char* pattern = format == nullptr ? "" : format;
    {
        PatternText& state = s_format();
        const Detail::MutexGuard<CMutex> guard(state.mutex);
        state.text = pattern;
    }
    char separator = Detail::separatorOf(pattern);
    if (separator == '\0') {
        separator = '-';
        FUNDO_REPORT_STATIC(Detail::kError, "setFormat separator is invalid,set default separator: - \n");
    }
    s_dateSeparator.store(separator, std::memory_order_relaxed);
    s_12hour.store(Detail::has12Hour(pattern), std::memory_order_relaxed);
    s_dateFormat.store(validOrder(pattern), std::memory_order_relaxed);
}

void CTime::setFormat(const std::string& format) { setFormatString(format.c_str()); }

std::string CTime::getFormat() {
    PatternText& state = s_format();
    const Detail::MutexGuard<CMutex> guard(state.mutex);
    return state.text;
}

int CTime::getDateFormat() { return s_dateFormat.load(std::memory_order_relaxed); }

bool CTime::get12Hour() { return s_12hour.load(std::memory_order_relaxed); }

char CTime::getSeparator() { return s_dateSeparator.load(std::memory_order_relaxed); }

void CTime::format(char* buf, const char* format, int flags) const {
    constexpr size_t kUnlimited = static_cast<size_t>(-1);
    this->format(buf, kUnlimited, format, flags);
}

size_t CTime::format(char* buf, size_t size, const char* format, int flags) const {
    if (buf == nullptr && size != 0) {
        FUNDO_REPORT_STATIC(Detail::kError, "buf is NULL!!\n");
        return 0;
    }
    return write(*this, {buf, size}, format, flags);
}

std::string CTime::format(const char* format, int flags) const {
    char text[64];
    const size_t length = write(*this, {text, sizeof text}, format, flags);
    if (length < sizeof text) return {text, length};
    std::string whole(length, '\0');
    write(*this, {whole.data(), length + 1}, format, flags);
    return whole;
}

}  // namespace Tovra::Fundo

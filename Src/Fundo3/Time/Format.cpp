// CTime's text: the process-wide display format, and the pattern language applied to a value.
#include <string>

#include "Fundo/Fundo3/Time.h"
#include "Fundo/Fundo3/Utc.h"
#include "Fundo3/Report.h"
#include "Fundo3/Time/DisplayFormat.h"
#include "Fundo3/Time/Pattern.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Time";

namespace {

using Display = Detail::DisplayFormat<CTime>;

Detail::PatternStyle chooseStyle(const char* pattern, int flags) {
    const bool ownOrder = (flags & CTime::ownOrder) != 0;
    const bool own12Hour = (flags & CTime::own12Hour) != 0;
    const bool ownSeparator = (flags & CTime::ownSeparator) != 0;
    return {ownOrder ? Detail::validOrder(pattern, {kSource, "format", __LINE__})
                     : static_cast<Detail::DateOrder>(CTime::getDateFormat()),
            own12Hour ? Detail::has12Hour(pattern) : CTime::get12Hour(),
            ownSeparator ? '\0' : CTime::getSeparator()};
}

size_t write(const CTime& time, Detail::CPatternWriter writer, const char* format, int flags) {
    Detail::writePattern(time, format, chooseStyle(format, flags), writer);
    return writer.finish();
}

}  // namespace

void CTime::setFormatString(const char* format) { Display::set(format == nullptr ? "" : format, FUNDO_SITE); }

void CTime::setFormat(const std::string& format) { setFormatString(format.c_str()); }

std::string CTime::getFormat() { return Display::text(); }

int CTime::getDateFormat() { return Display::order(); }

bool CTime::get12Hour() { return Display::is12Hour(); }

char CTime::getSeparator() { return Display::separator(); }

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

// The scan and the walk of date patterns.
//
// The date is laid out first: up to three fields in the chosen order, the missing ones closed up. The walk
// then takes a field for each run of y, M or d, whatever the letter.
#include "Fundo3/Time/Pattern.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace Tovra::Fundo::Detail {

namespace {

bool isDateLetter(char c) { return c == 'y' || c == 'M' || c == 'd'; }

// How often the letters of the date stand in a pattern, gathered in one register.
class LetterCounts {
public:
    explicit LetterCounts(const char* pattern) {
        for (; *pattern != '\0'; ++pattern)
            m_counts += kOne[static_cast<unsigned char>(*pattern)];
    }
    size_t years() const { return m_counts & kMask; }
    size_t months() const { return m_counts >> kBits & kMask; }
    size_t days() const { return m_counts >> 2 * kBits & kMask; }

private:
    static constexpr int kBits = 21;
    static constexpr uint64_t kMask = (uint64_t{1} << kBits) - 1;

    static constexpr std::array<uint64_t, 256> ones() {
        std::array<uint64_t, 256> table{};
        table['y'] = 1;
        table['M'] = uint64_t{1} << kBits;
        table['d'] = uint64_t{1} << 2 * kBits;
        return table;
    }
    static const std::array<uint64_t, 256> kOne;

    uint64_t m_counts = 0;
};

constexpr std::array<uint64_t, 256> LetterCounts::kOne = LetterCounts::ones();

struct Number {
    int value;
    size_t digits;  // 0 prints nothing
};

class DateFields {
public:
    DateFields(const SystemTime& time, const LetterCounts& letters, const PatternStyle& style) {
        const size_t years = letters.years();
        const Number year = years >= 3 ? Number{time.year, 4} : Number{time.year % 100, years == 0 ? 0U : 2U};
        const Number month{time.month, shortOrTwo(letters.months())};
        const Number day{time.day, shortOrTwo(letters.days())};
        switch (style.order) {
            case kMonthDayYear:
                set(month, day, year);
                break;
            case kDayMonthYear:
                set(day, month, year);
                break;
            default:
                set(year, month, day);
                break;
        }
        style.absent == AbsentParts::kLeftOut ? leaveOut() : closeGap();
    }

    void putNext(CPatternWriter& writer) {
        if (m_next == 3) return;
        const Number& field = m_fields[m_next++];
        if (field.digits != 0) writer.putNumber(field.value, field.digits);
    }

    static size_t shortOrTwo(size_t letters) { return letters < 2 ? letters : 2; }

private:
    void set(const Number& first, const Number& second, const Number& third) {
        m_fields[0] = first;
        m_fields[1] = second;
        m_fields[2] = third;
    }

    // Contract: the third place keeps its field when a gap before it is closed, and one step closes one gap.
    void closeGap() {
        if (m_fields[0].digits == 0) {
            m_fields[0] = m_fields[1];
            m_fields[1] = m_fields[2];
        } else if (m_fields[1].digits == 0) {
            m_fields[1] = m_fields[2];
        }
    }

    void leaveOut() {
        const auto isAbsent = [](const Number& field) { return field.digits == 0; };
        std::fill(std::remove_if(std::begin(m_fields), std::end(m_fields), isAbsent), std::end(m_fields),
                  Number{0, 0});
    }

    Number m_fields[3];
    int m_next = 0;
};

size_t runLength(const char* pattern) {
    size_t length = 1;
    while (pattern[length] == pattern[0])
        ++length;
    return length;
}

size_t hourRunLength(const char* pattern) { return std::strspn(pattern, "hH"); }

int shownHour(int hour, bool clock12Hour) {
    if (!clock12Hour) return hour;
    if (hour == 0) return 12;
    return hour > 12 ? hour - 12 : hour;
}

}  // namespace

// The first two letters decide: the third can only follow them or be missing.
DateOrder dateOrderOf(const char* pattern) {
    char first = '\0';
    for (; *pattern != '\0'; ++pattern) {
        const char c = *pattern;
        if (c == first || !isDateLetter(c)) continue;
        if (first == '\0') {
            first = c;
            continue;
        }
        if (first == 'y' && c == 'M') return kYearMonthDay;
        if (first == 'M' && c == 'd') return kMonthDayYear;
        return first == 'd' && c == 'M' ? kDayMonthYear : kNoOrder;
    }
    return kNoOrder;
}

char separatorOf(const char* pattern) {
    for (const char separator : {'.', '/', '-'}) {
        if (std::strchr(pattern, separator) != nullptr) return separator;
    }
    return '\0';
}

bool has12Hour(const char* pattern) { return std::strchr(pattern, 'h') != nullptr; }

void CPatternWriter::putText(const char* text) {
    while (*text != '\0')
        put(*text++);
}

void CPatternWriter::putAnyNumber(int value, size_t digits) {
    char text[12];
    size_t length = 0;
    unsigned magnitude = value < 0 ? 0U - static_cast<unsigned>(value) : static_cast<unsigned>(value);
    const size_t wanted = value < 0 && digits > 1 ? digits - 1 : digits;
    do {
        text[length++] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (value < 0) put('-');
    for (size_t zeros = length; zeros < wanted; ++zeros)
        put('0');
    while (length > 0)
        put(text[--length]);
}

size_t CPatternWriter::finish() {
    if (m_size != 0) m_buffer[m_length < m_room ? m_length : m_room] = '\0';
    return m_length;
}

void writePattern(const SystemTime& time, const char* pattern, const PatternStyle& style,
                  CPatternWriter& writer) {
    DateFields date(time, LetterCounts(pattern), style);
    const auto putShortOrTwo = [&writer](int value, size_t letters) {
        writer.putNumber(value, DateFields::shortOrTwo(letters));
    };
    while (*pattern != '\0') {
        const char c = *pattern;
        size_t taken = 1;
        switch (c) {
            case '-':
            case '.':
            case '/':
                writer.put(style.separator != '\0' ? style.separator : c);
                break;
            case 'y':
            case 'M':
            case 'd':
                taken = runLength(pattern);
                date.putNext(writer);
                break;
            case 'h':
            case 'H':
                taken = hourRunLength(pattern);
                putShortOrTwo(shownHour(time.hour, style.clock12Hour), taken);
                break;
            case 'm':
                taken = runLength(pattern);
                putShortOrTwo(time.minute, taken);
                break;
            case 's':
                taken = runLength(pattern);
                putShortOrTwo(time.second, taken);
                break;
            case 't':
                taken = runLength(pattern);
                style.clock12Hour ? writer.putText(time.hour < 12 ? "AM" : "PM") : writer.takeBackBlanks();
                break;
            default:
                writer.put(c);
                break;
        }
        pattern += taken;
    }
}

}  // namespace Tovra::Fundo::Detail

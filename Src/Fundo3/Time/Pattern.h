#pragma once

#include <cstddef>

#include "Fundo/Fundo3/SystemTime.h"

// The pattern language of dates: one scan and one walk for every class that formats or parses.

namespace Tovra::Fundo::Detail {

enum DateOrder : int { kYearMonthDay = 0, kMonthDayYear = 1, kDayMonthYear = 2, kNoOrder = -1 };

// The order of the first y, M and d, a missing one counting as last; kNoOrder if it is none of the three.
DateOrder dateOrderOf(const char* pattern);

// The separator that the pattern chooses; 0 if it has none.
char separatorOf(const char* pattern);

// Whether the pattern asks for the 12-hour clock.
bool has12Hour(const char* pattern);

// Text of limited or unlimited room, counted in full.
class CPatternWriter {
public:
    CPatternWriter(char* buffer, size_t size)
        : m_buffer(buffer), m_room(size == 0 ? 0 : size - 1), m_size(size) {}

    void put(char c) {
        if (m_length < m_room) m_buffer[m_length] = c;
        ++m_length;
        if (c != ' ') m_inkEnd = m_length;
    }
    void putText(const char* text);

    // Decimal, with leading zeros up to so many characters.
    void putNumber(int value, size_t digits) {
        if (digits == 2 && static_cast<unsigned>(value) < 100) return putPair(value);
        if (digits == 4 && static_cast<unsigned>(value) < 10000) {
            putPair(value / 100);
            return putPair(value % 100);
        }
        putAnyNumber(value, digits);
    }

    // Up to the last character that is no blank.
    void takeBackBlanks() { m_length = m_inkEnd; }

    // Terminates and answers the length wanted.
    size_t finish();

private:
    void putPair(int value) {
        put(static_cast<char>('0' + value / 10));
        put(static_cast<char>('0' + value % 10));
    }
    void putAnyNumber(int value, size_t digits);

    char* m_buffer;
    size_t m_room;
    size_t m_size;
    size_t m_length = 0;
    size_t m_inkEnd = 0;
};

// What stands for a part of the date that the pattern has no letter for.
enum class AbsentParts {
    kOneClosed,  // the part behind it moves up, as far as one gap goes, and the last stays in its place too
    kLeftOut     // nothing: all that follow move up
};

struct PatternStyle {
    DateOrder order;
    bool clock12Hour;
    char separator;  // 0 keeps the pattern's own
    AbsentParts absent = AbsentParts::kOneClosed;
};

void writePattern(const SystemTime& time, const char* pattern, const PatternStyle& style,
                  CPatternWriter& writer);

}  // namespace Tovra::Fundo::Detail

// Code page 936 (GBK): pairs of a lead byte from 0x81 to 0xFE and a second byte from 0x40 to 0xFE. The chart
// is a row of text for each lead byte; the compiler makes the way back from it. 0 is unassigned in all
// tables.
#include <algorithm>
#include <cstring>

#include "Utils/Unicode.h"
#include "Utils/Unicode/Runs.h"
#include "Utils/Unicode/Strings.h"

namespace Tovra::Utils {

namespace {

constexpr unsigned kFirstLead = 0x81, kLeads = 126, kFirstSecond = 0x40, kSeconds = 192;
constexpr unsigned short kEuro = 0x20ac;

// The terminator of a row stands for the second byte 0xFF, which no pair has.
constexpr char16_t s_charset2uni[kLeads][kSeconds] = {
#include "Utils/Unicode/Charts/CodePage936.inc"
};

constexpr bool isLead(unsigned byte) { return byte - kFirstLead < kLeads; }

// The unit of a pair; 0 for none.
unsigned short unitOf(unsigned lead, unsigned second) {
    return second < kFirstSecond ? 0 : s_charset2uni[lead - kFirstLead][second - kFirstSecond];
}

constexpr unsigned short singleUnit(unsigned char byte) { return byte == 0x80 ? kEuro : byte; }

constexpr size_t kPages = 101;

struct WayBack {
    constexpr WayBack() {
        for (unsigned lead = 0; lead < kLeads; ++lead)
            for (unsigned second = 0; second < kSeconds; ++second)
                add(s_charset2uni[lead][second], (lead + kFirstLead) << 8 | (second + kFirstSecond));
    }

    // Page 0 stays out: all its units are single bytes.
    constexpr void add(unsigned unit, unsigned pair) {
        if (unit < 0x100) return;
        unsigned char& page = page_uni2charset[unit >> 8];
        if (page == 0) page = ++count;
        pages[page - 1][unit & 0xff] = static_cast<unsigned short>(pair);
    }

    unsigned char count = 0;
    unsigned char page_uni2charset[256] = {};  // by high byte, from 1; 0 for none
    unsigned short pages[kPages][256] = {};    // by low byte: the lead byte is the higher one
};

constexpr WayBack s_uni2charset;
static_assert(s_uni2charset.count == kPages);

// uni2char(), which the exported name would hide from the compiler.
int writeUnit(unsigned short uni, unsigned char* out, int boundlen) {
    if (boundlen < 1) return -1;
    const unsigned page = s_uni2charset.page_uni2charset[uni >> 8];
    if (page == 0) {
        // Contract: all of Latin-1 is single bytes, though pairs exist for twenty of them.
        if (uni == 0 || uni > 0xff) return -1;
        out[0] = static_cast<unsigned char>(uni);
        return 1;
    }
    if (boundlen < 2) return -1;
    const unsigned pair = s_uni2charset.pages[page - 1][uni & 0xff];
    out[0] = static_cast<unsigned char>(pair >> 8);
    out[1] = static_cast<unsigned char>(pair);
    return pair != 0 ? 2 : -1;
}

// Reads text from src on until the room is used up, the text ends, or src stands at an unassigned pair.
size_t readPairs(unsigned short* dst, size_t room, const unsigned char*& src, const unsigned char* end) {
    unsigned short* out = dst;
    unsigned short* const full = dst + room;
    while (src < end && out < full) {
        if (*src < 0x80) {
            const auto most = std::min(static_cast<size_t>(end - src), static_cast<size_t>(full - out));
            const size_t run = Detail::widenAscii(out, src, most);
            out += run;
            src += run;
            if (run == most) break;
        }
        if (!isLead(*src) || end - src == 1) {
            *out++ = singleUnit(*src++);
            continue;
        }
        const unsigned short unit = unitOf(src[0], src[1]);
        if (unit == 0) break;
        *out++ = unit;
        src += 2;
    }
    return static_cast<size_t>(out - dst);
}

// Appends units as null-terminated text.
class PairWriter {
public:
    PairWriter(char* dst, int size) : m_dst(reinterpret_cast<unsigned char*>(dst)), m_left(size) {}

    // False when the text has ended, within these units or before.
    bool append(const unsigned short* uni, size_t n) {
        for (size_t i = 0; i < n && !m_ended;) {
            const size_t run = Detail::isBlockStart(uni + i) ? appendAscii(uni + i, n - i) : 0;
            i += run;
            if (run == 0) appendOne(uni[i++]);
        }
        return !m_ended;
    }

    // Terminates the text, and gives the result of the conversion.
    int finish() {
        // Contract: a full fit ends behind size.
        if (m_left > 0) {
            std::memset(m_dst, 0, static_cast<size_t>(m_left));
        } else if (m_units > 0) {
            *m_dst = 0;
        }
        return m_isUnmapped ? -1 : m_units;
    }

private:
    size_t appendAscii(const unsigned short* uni, size_t n) {
        const size_t room = m_left > 0 ? static_cast<size_t>(m_left) : 0;
        const size_t run = Detail::narrowAscii(m_dst, uni, std::min(n, room));
        advance(static_cast<int>(run), static_cast<int>(run));
        return run;
    }

    void appendOne(unsigned short unit) {
        unsigned char bytes[2];
        const int length = unit != 0 ? writeUnit(unit, bytes, 2) : 0;
        m_isUnmapped = length < 0;
        m_ended = length < 1 || length > m_left;
        if (m_ended) return;
        m_dst[0] = bytes[0];
        if (length == 2) m_dst[1] = bytes[1];
        advance(length, 1);
    }

    void advance(int bytes, int units) {
        m_dst += bytes;
        m_left -= bytes;
        m_units += units;
    }

    unsigned char* m_dst;
    int m_left;
    int m_units = 0;
    bool m_ended = false;
    bool m_isUnmapped = false;
};

// Units that a conversion between two encodings holds at a time.
constexpr size_t kPiece = 512;

struct Piece {
    alignas(16) unsigned short units[kPiece + 1];
};

}  // namespace

int char2uni(const unsigned char* s, int len, unsigned short* out) {
    if (len < 1) return -1;
    if (len == 1 || !isLead(s[0]) || s[1] == 0) {
        *out = singleUnit(s[0]);
        return 1;
    }
    *out = unitOf(s[0], s[1]);
    return *out != 0 ? 2 : -1;
}

int uni2char(unsigned short uni, unsigned char* out, int boundlen) { return writeUnit(uni, out, boundlen); }

int Gb2312ToUni(char* gb, unsigned short* out, int n) {
    if (out == nullptr || n < 1) return 0;
    const auto room = static_cast<size_t>(n);
    size_t count = 0;
    if (gb != nullptr) {
        const auto* const begin = reinterpret_cast<const unsigned char*>(gb);
        const unsigned char* const end = begin + std::strlen(gb);
        for (const unsigned char* src = begin;;) {
            count += readPairs(out + count, room - count, src, end);
            if (src == end || count == room) break;
            // Contract: an unassigned pair gives 0 and goes back to the byte before it, for ever.
            out[count++] = 0;
            if (src != begin) --src;
        }
    }
    std::fill(out + count, out + room, static_cast<unsigned short>(0));
    return static_cast<int>(count);
}

int UniTGb2312(unsigned short* uni, int n, char* dst, int size) {
    PairWriter writer(dst, size);
    if (n > 0) writer.append(uni, static_cast<size_t>(n));
    return writer.finish();
}

int Gb2312TUtf8(char* gb, unsigned char* utf8, int size) {
    if (gb == nullptr || utf8 == nullptr || *gb == '\0') return 0;
    const auto* src = reinterpret_cast<const unsigned char*>(gb);
    const unsigned char* const end = src + std::strlen(gb);
    int written = 0;
    for (int limit = size; limit > 0;) {
        Piece piece;
        const size_t count = readPairs(piece.units, kPiece, src, end);
        piece.units[count] = 0;
        written += static_cast<int>(Detail::encodeUtf8(utf8 + written, piece.units, limit));
        // A piece that is not full stopped at the end or at an unassigned pair, which is unit 0.
        if (count < kPiece) break;
    }
    if (written < size) std::memset(utf8 + written, 0, static_cast<size_t>(size - written));
    return written;
}

int utf8TGb2312(unsigned char* utf8, char* dst, int srcLimit, int size) {
    if (utf8 == nullptr || dst == nullptr || *utf8 == 0) return 0;
    PairWriter writer(dst, size);
    const unsigned char* src = utf8;
    const unsigned char* const end =
        src + strnlen(reinterpret_cast<const char*>(src), static_cast<size_t>(std::max(srcLimit, 0)));
    while (src < end) {
        Piece piece;
        const unsigned char* stop = src + std::min(kPiece, static_cast<size_t>(end - src));
        const size_t count = Detail::decodeUtf8(piece.units, src, stop, end);
        if (!writer.append(piece.units, count)) break;
    }
    return writer.finish();
}

}  // namespace Tovra::Utils

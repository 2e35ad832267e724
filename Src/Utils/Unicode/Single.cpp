// One character at a time; whole texts are in Strings.cpp.
#include "Utils/Unicode.h"

#include <cstring>

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo3/Report.h"
#include "Utils/Unicode/Utf8Forms.h"

namespace Tovra::Utils {

int utf8_mbtowc(unsigned short* out, const unsigned char* s, int n) { return Detail::readUnit(out, s, n); }

int utf8_wctomb(unsigned char* s, unsigned short wc, int maxlen) { return Detail::writeUnit(s, wc, maxlen); }

int get_utf8_size(unsigned char lead) {
    if (lead < 0x80) return 0;
    if (lead < 0xc0) return -1;
    // 0xfe and 0xff begin no sequence; callers get the longest length for them.
    return lead < 0xfc ? Detail::sequenceLength(lead) : 6;
}

unsigned short GetUnicodeFromUtf8(const char* s, int* bytes) {
    *bytes = 0;
    unsigned gathered = 0;
    for (int awaited = 0;; ++s) {
        const auto byte = static_cast<unsigned char>(*s);
        if (byte == 0) return 0;
        if (awaited > 0) {
            if (!Detail::isContinuation(byte)) break;
            gathered = gathered << 6 | (byte & 0x3fU);
            if (--awaited == 0) break;
            continue;
        }
        if (byte < 0x80) {
            *bytes = 1;
            return byte;
        }
        if (byte < 0xc0 || byte >= 0xf0) break;
        *bytes = byte < 0xe0 ? 2 : 3;
        gathered = byte & (byte < 0xe0 ? 0x1fU : 0x0fU);
        awaited = *bytes - 1;
    }
    return static_cast<unsigned short>(gathered);
}

namespace {

int refuse(const char* why) {
    Fundo::logLibName(Fundo::Detail::kWarn, "libFundo", "%s\n", why);
    return 0;
}

}  // namespace

int UCS4ToUtf8(char* ucs4, int ucs4Len, unsigned char* utf8, int utf8Size) {
    if (ucs4 == nullptr) return refuse("ucs4 is invalid");
    if (utf8 == nullptr) return refuse("utf8 is invalid");
    if (ucs4Len % 4 != 0) return refuse("UCS4ToUtf8 ucs4Len error");
    int written = 0;
    for (int at = 0; at < ucs4Len; at += 4) {
        uint32_t value = 0;
        std::memcpy(&value, ucs4 + at, sizeof value);
        if (value > 0x7fffffff) continue;
        const int length = Detail::utf8Length(value);
        if (length > utf8Size - written) {
            refuse("UCS4ToUtf8 utf8Size error");
            break;
        }
        Detail::writeUtf8(utf8 + written, value, length);
        written += length;
    }
    return written;
}

}  // namespace Tovra::Utils

#include "Fundo/Unicode.h"

#include "Utils/Unicode.h"

namespace Utils = Tovra::Utils;

int Gb2312TUtf8(char* gb, unsigned char* utf8, int size) { return Utils::Gb2312TUtf8(gb, utf8, size); }

int utf8TGb2312(unsigned char* utf8, char* dst, int srcLimit, int size) {
    return Utils::utf8TGb2312(utf8, dst, srcLimit, size);
}

int Gb2312ToUni(char* gb, unsigned short* out, int n) { return Utils::Gb2312ToUni(gb, out, n); }

int UniTGb2312(unsigned short* uni, int n, char* dst, int size) {
    return Utils::UniTGb2312(uni, n, dst, size);
}

int uni2char(unsigned short uni, unsigned char* out, int boundlen) {
    return Utils::uni2char(uni, out, boundlen);
}

int char2uni(const unsigned char* s, int len, unsigned short* out) { return Utils::char2uni(s, len, out); }

int utf8_mbtowc(unsigned short* out, const unsigned char* s, int n) { return Utils::utf8_mbtowc(out, s, n); }

int utf8_mbstowcs(unsigned short* dst, const unsigned char* src, int n) {
    return Utils::utf8_mbstowcs(dst, src, n);
}

int utf8_wctomb(unsigned char* s, unsigned short wc, int maxlen) { return Utils::utf8_wctomb(s, wc, maxlen); }

int utf8_wcstombs(unsigned char* dst, const unsigned short* src, int maxlen) {
    return Utils::utf8_wcstombs(dst, src, maxlen);
}

unsigned short GetUnicodeFromUtf8(const char* s, int* bytes) { return Utils::GetUnicodeFromUtf8(s, bytes); }

int cp1252_to_utf8(unsigned char* dst, int dstLen, const unsigned char* src, int srcLen) {
    return Utils::cp1252_to_utf8(dst, dstLen, src, srcLen);
}

int utf8_to_cp1252(const unsigned char* src, int srcLen, unsigned char* dst, int dstLen) {
    return Utils::utf8_to_cp1252(src, srcLen, dst, dstLen);
}

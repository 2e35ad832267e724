#pragma once

#include "Fundo/Fundo3/Export.h"

/// @file
/// The encodings under their old, global names. Each forwards to the function of that name of
/// Utils/Unicode.h, which tells terminators, limits and what happens to bad input.

/// GBK to UTF-8. @return bytes written
FUNDO_API int Gb2312TUtf8(char* gb, unsigned char* utf8, int size);
/// UTF-8 to GBK. @return units converted, or -1
FUNDO_API int utf8TGb2312(unsigned char* utf8, char* dst, int srcLimit, int size);
/// GBK to 16-bit units. @return units written
FUNDO_API int Gb2312ToUni(char* gb, unsigned short* out, int n);
/// 16-bit units to GBK. @return units converted, or -1
FUNDO_API int UniTGb2312(unsigned short* uni, int n, char* dst, int size);
/// One unit to one or two bytes of GBK. @return bytes written, or -1
FUNDO_API int uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// One character of GBK to a unit. @return bytes read, or -1
FUNDO_API int char2uni(const unsigned char* s, int len, unsigned short* out);
/// One character of UTF-8 to a unit. @return bytes read, or -1
FUNDO_API int utf8_mbtowc(unsigned short* out, const unsigned char* s, int n);
/// UTF-8 to units. @return units written
FUNDO_API int utf8_mbstowcs(unsigned short* dst, const unsigned char* src, int n);
/// One unit to UTF-8. @return bytes written, or -1
FUNDO_API int utf8_wctomb(unsigned char* s, unsigned short wc, int maxlen);
/// Units to UTF-8. @return bytes written
FUNDO_API int utf8_wcstombs(unsigned char* dst, const unsigned short* src, int maxlen);
/// One character of UTF-8, of at most three bytes. @return its unit; bytes takes its length
FUNDO_API unsigned short GetUnicodeFromUtf8(const char* s, int* bytes);
/// Code page 1252 to UTF-8. @return 0, the size needed, or -1
FUNDO_API int cp1252_to_utf8(unsigned char* dst, int dstLen, const unsigned char* src, int srcLen);
/// UTF-8 to code page 1252. @return bytes written
FUNDO_API int utf8_to_cp1252(const unsigned char* src, int srcLen, unsigned char* dst, int dstLen);

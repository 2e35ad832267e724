#pragma once

#include "Fundo/Fundo3/Export.h"

/// @file
/// Conversions between byte encodings, 16-bit Unicode and UTF-8.
///
/// Each function has rules of its own for terminators, limits and bad input; none substitutes a replacement
/// character: what cannot be mapped is dropped, stored as 0, or ends the conversion. Sizes are of bytes
/// unless told. Units are 16-bit code points of the Basic Multilingual Plane in native order, surrogates are
/// nothing special; only UCS4ToUtf8() and the pair of code page 1252 handle wider values. Source and
/// destination must not overlap. Text is null-terminated only where told.
///
/// UTF-8 is the form of one to six bytes (RFC 2279). All functions are reentrant, and all tables constant.

namespace Tovra::Utils {

/// Reads one UTF-8 sequence; over-long forms are refused, values above 0xFFFF cut to their low 16 bits.
/// @param n bytes that may be read; a first byte below 0x80 is read in any case
/// @return the length of the sequence, or -1, which leaves *out as it was
FUNDO_API int utf8_mbtowc(unsigned short* out, const unsigned char* s, int n);

/// Writes one unit as a UTF-8 sequence of at most 3 bytes.
/// @param s      null gives 0
/// @param maxlen room; 0 gives -1, a negative one does not limit
/// @return the length of the sequence, or -1 for lack of room
FUNDO_API int utf8_wctomb(unsigned char* s, unsigned short wc, int maxlen);

/// Reads UTF-8 to a zero byte or for n bytes; each byte that begins no valid sequence is dropped.
/// @param dst takes a unit for each byte of the source at most; no terminator is written
/// @return the units written
FUNDO_API int utf8_mbstowcs(unsigned short* dst, const unsigned char* src, int n);

/// Writes units up to a zero unit as UTF-8; no terminator is written.
/// @param maxlen limits the bytes of the sequences of 2 and 3 bytes alone. ASCII does not count, so that the
///               limit guards no buffer against it: dst must take what src gives. A unit that passes what is
///               left of the limit is dropped and lowers it by 1
/// @return the bytes written
FUNDO_API int utf8_wcstombs(unsigned char* dst, const unsigned short* src, int maxlen);

/// The length that the first byte of a UTF-8 sequence of 2 to 6 bytes tells; 0 (not 1) for a byte below 0x80,
/// -1 for a continuation byte.
FUNDO_API int get_utf8_size(unsigned char lead);

/// Reads one character of at most 3 bytes from null-terminated UTF-8. A zero byte gives 0; a byte that does
/// not fit gives what was gathered before it, cut to 16 bits. Over-long forms are read like others.
/// @param bytes the length that the first byte told, 0 for a zero byte or one that begins no such character
FUNDO_API unsigned short GetUnicodeFromUtf8(const char* s, int* bytes);

/// Writes 32-bit code points as UTF-8 of up to six bytes; those with the top bit set are dropped. No
/// terminator is written. Logs at level 3 and returns: 0 behind "ucs4 is invalid", "utf8 is invalid" (null
/// pointers) and "UCS4ToUtf8 ucs4Len error" (no multiple of 4); the bytes written so far behind "UCS4ToUtf8
/// utf8Size error" (no room for a whole sequence).
/// @param ucs4    native order; need not be aligned
/// @param ucs4Len bytes, not code points
/// @return the bytes written
FUNDO_API int UCS4ToUtf8(char* ucs4, int ucs4Len, unsigned char* utf8, int utf8Size);

/// Writes bytes of any charset as UTF-8; a byte for which char2uni answers below 0 is dropped. No terminator
/// is written.
/// @param dstLen   room, at least srcLen; becomes the bytes written
/// @param srcLen   becomes the bytes consumed, less than given if dst was full before
/// @param char2uni maps the byte at its first argument, as those of the charsets below do
/// @return 0, or -1 with nothing changed: a null pointer, srcLen below 1, dstLen below srcLen
FUNDO_API int char_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen,
                           int (*char2uni)(const unsigned char*, int, unsigned short*));

/// Writes code page 1252 as UTF-8. From the first of the undefined bytes 0x81, 0x8D, 0x8F, 0x90 and 0x9D on,
/// each byte becomes a NUL byte.
/// @return 0; the room needed, if dstLen is below it, with dst untouched; -1 if src is null or srcLen below 1
FUNDO_API int cp1252_to_utf8(unsigned char* dst, int dstLen, const unsigned char* src, int srcLen);

/// Writes UTF-8 as code page 1252. Characters outside it are dropped, U+00FF with them; a byte that does not
/// fit ends the conversion.
/// @param src    a sequence that begins before srcLen is read to its end: what follows the text must be
///               readable, a terminator is enough
/// @param dst    takes srcLen bytes
/// @param dstLen not read
/// @return the bytes written
FUNDO_API int utf8_to_cp1252(const unsigned char* src, int srcLen, unsigned char* dst, int dstLen);

/// Reads one character of code page 936 (GBK): a pair, or a single byte, of which 0x80 is U+20AC and the
/// others stand for themselves. A first byte at the end of the input counts as a single byte.
/// @param len bytes that may be read
/// @return the bytes read, or -1 if len is below 1 or the pair is unassigned, which stores 0
FUNDO_API int char2uni(const unsigned char* s, int len, unsigned short* out);

/// Writes one unit in code page 936. U+0001 to U+00FF are single bytes.
/// @param boundlen room
/// @return the bytes written, or -1 for lack of room or a unit that has no place; out may have been changed
FUNDO_API int uni2char(unsigned short uni, unsigned char* out, int boundlen);

/// Reads null-terminated code page 936. An unassigned pair gives 0 and steps one byte back, if there is one,
/// so that such a text fills all of out with repetitions.
/// @param gb  null gives 0, with out zeroed
/// @param out zeroed in full where no character comes; null gives 0
/// @param n   units of out; a text that fills them gets no terminator
/// @return the units written
FUNDO_API int Gb2312ToUni(char* gb, unsigned short* out, int n);

/// Writes units up to a zero unit as null-terminated code page 936.
/// @param n    units to read at most
/// @param dst  size + 1 bytes: a full fit ends with a terminator behind size. All of it is zeroed first
/// @return the units written, fewer than given if dst was full before; -1 if a unit has no place, with those
///         before it written
FUNDO_API int UniTGb2312(unsigned short* uni, int n, char* dst, int size);

/// Writes null-terminated code page 936 as UTF-8, up to the first unassigned pair. No terminator is written
/// behind size bytes.
/// @param utf8 takes the whole text, since the limit does not hold ASCII back; its first size bytes are
///             zeroed
/// @param size the limit, as told of utf8_wcstombs()
/// @return the bytes written; 0 for null pointers and the empty text, which change nothing
FUNDO_API int Gb2312TUtf8(char* gb, unsigned char* utf8, int size);

/// Writes null-terminated UTF-8 as null-terminated code page 936; bad bytes are dropped.
/// @param dst      size + 1 bytes, as UniTGb2312() has it
/// @param srcLimit bytes of utf8 to read at most
/// @return as UniTGb2312() does; 0 for null pointers and the empty text, which change nothing
FUNDO_API int utf8TGb2312(unsigned char* utf8, char* dst, int srcLimit, int size);

/// @name Single-byte charsets
/// Three functions for each charset X.
///
/// X_uni2char() writes one unit as a byte. It returns 1, or -1 if the room boundlen is below 1 or the charset
/// lacks the unit; U+0000 counts as lacking.
///
/// X_char2uni() reads the byte s[0]; len is ignored. It stores the unit, 0 for an unassigned byte, and
/// returns 1, or -1 for an unassigned byte and the byte 0.
///
/// X_to_utf8() is char_to_utf8() with X_char2uni().
/// @{

/// A unit to code page 1250 (Central European).
FUNDO_API int cp1250_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of code page 1250 (Central European) to a unit.
FUNDO_API int cp1250_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of code page 1250 (Central European) to UTF-8.
FUNDO_API int cp1250_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to code page 1251 (Cyrillic).
FUNDO_API int cp1251_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of code page 1251 (Cyrillic) to a unit.
FUNDO_API int cp1251_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of code page 1251 (Cyrillic) to UTF-8.
FUNDO_API int cp1251_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to code page 862 (Hebrew).
FUNDO_API int cp862_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of code page 862 (Hebrew) to a unit.
FUNDO_API int cp862_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of code page 862 (Hebrew) to UTF-8.
FUNDO_API int cp862_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to code page 874 (Thai).
FUNDO_API int cp874_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of code page 874 (Thai) to a unit.
FUNDO_API int cp874_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of code page 874 (Thai) to UTF-8.
FUNDO_API int cp874_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-1 (Western European).
FUNDO_API int iso8859_1_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-1 (Western European) to a unit.
FUNDO_API int iso8859_1_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-1 (Western European) to UTF-8.
FUNDO_API int iso8859_1_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-2 (Central European).
FUNDO_API int iso8859_2_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-2 (Central European) to a unit.
FUNDO_API int iso8859_2_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-2 (Central European) to UTF-8.
FUNDO_API int iso8859_2_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-3 (South European).
FUNDO_API int iso8859_3_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-3 (South European) to a unit.
FUNDO_API int iso8859_3_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-3 (South European) to UTF-8.
FUNDO_API int iso8859_3_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-4 (North European).
FUNDO_API int iso8859_4_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-4 (North European) to a unit.
FUNDO_API int iso8859_4_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-4 (North European) to UTF-8.
FUNDO_API int iso8859_4_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-5 (Cyrillic).
FUNDO_API int iso8859_5_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-5 (Cyrillic) to a unit.
FUNDO_API int iso8859_5_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-5 (Cyrillic) to UTF-8.
FUNDO_API int iso8859_5_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-6 (Arabic).
FUNDO_API int iso8859_6_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-6 (Arabic) to a unit.
FUNDO_API int iso8859_6_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-6 (Arabic) to UTF-8.
FUNDO_API int iso8859_6_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-7 (Greek).
FUNDO_API int iso8859_7_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-7 (Greek) to a unit.
FUNDO_API int iso8859_7_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-7 (Greek) to UTF-8.
FUNDO_API int iso8859_7_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-8 (Hebrew).
FUNDO_API int iso8859_8_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-8 (Hebrew) to a unit.
FUNDO_API int iso8859_8_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-8 (Hebrew) to UTF-8.
FUNDO_API int iso8859_8_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-9 (Turkish).
FUNDO_API int iso8859_9_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-9 (Turkish) to a unit.
FUNDO_API int iso8859_9_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-9 (Turkish) to UTF-8.
FUNDO_API int iso8859_9_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-10 (Nordic).
FUNDO_API int iso8859_10_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-10 (Nordic) to a unit.
FUNDO_API int iso8859_10_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-10 (Nordic) to UTF-8.
FUNDO_API int iso8859_10_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-13 (Baltic).
FUNDO_API int iso8859_13_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-13 (Baltic) to a unit.
FUNDO_API int iso8859_13_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-13 (Baltic) to UTF-8.
FUNDO_API int iso8859_13_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-14 (Celtic).
FUNDO_API int iso8859_14_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-14 (Celtic) to a unit.
FUNDO_API int iso8859_14_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-14 (Celtic) to UTF-8.
FUNDO_API int iso8859_14_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-15 (Western European with the euro).
FUNDO_API int iso8859_15_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-15 (Western European with the euro) to a unit.
FUNDO_API int iso8859_15_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-15 (Western European with the euro) to UTF-8.
FUNDO_API int iso8859_15_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// A unit to ISO 8859-16 (South-Eastern European).
FUNDO_API int iso8859_16_uni2char(unsigned short uni, unsigned char* out, int boundlen);
/// A byte of ISO 8859-16 (South-Eastern European) to a unit.
FUNDO_API int iso8859_16_char2uni(const unsigned char* s, int len, unsigned short* out);
/// Bytes of ISO 8859-16 (South-Eastern European) to UTF-8.
FUNDO_API int iso8859_16_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen);

/// @}

}  // namespace Tovra::Utils

#pragma once

#include <cstddef>
#include <cstdint>

#include "Fundo/Fundo3/Export.h"

/// @file
/// Bounded string functions, portable names for two system functions, and dotted addresses.
///
/// strncat() and strncpy() take the size of the destination and answer differently from their standard
/// namesakes. Null pointers are not allowed unless told. All functions are reentrant.

namespace Tovra {

/// An IPv4 address. Of a.b.c.d, a is the high byte of the value on a little-endian machine and the low byte
/// on a big-endian one: never the order of the network.
typedef uint32_t IpAddress;

}  // namespace Tovra

namespace Tovra::Utils {

/// The system's snprintf under a portable name. May be re-pointed, but not while another thread may call it.
extern FUNDO_API int (*snprintf)(char* dst, size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// The system's comparison without regard to case (strcasecmp) under a portable name. May be re-pointed, but
/// not while another thread may call it.
extern FUNDO_API int (*stricmp)(const char* a, const char* b);

/// Appends at most n characters of src, and no more than fit; dst always ends with a terminator.
/// @param dstSize bytes of dst, more than the text that it holds: a full dst makes the room wrap around, and
///                then n alone limits
/// @return the characters that could have been appended (the smaller of the room and n), however short src is
FUNDO_API size_t strncat(char* dst, size_t dstSize, const char* src, size_t n);

/// Copies at most n characters of src, and no more than fit; dst always ends with a terminator, and the bytes
/// up to the smaller of dstSize - 1 and n are zeroed behind a shorter text.
/// @param dstSize bytes of dst, at least 1
/// @return the length of the text in dst
FUNDO_API size_t strncpy(char* dst, size_t dstSize, const char* src, size_t n);

/// Formats as printf does, and cuts what does not fit; dst always ends with a terminator.
/// @param size bytes of dst, at least 1
/// @return the length of the text in dst, never the length wanted; 0 if the text cannot be formatted
FUNDO_API int snprintf_x(char* dst, int size, const char* format, ...) __attribute__((format(printf, 3, 4)));

/// Writes an address as "a.b.c.d", cut to the size of the buffer; 16 bytes take any address.
/// @param size bytes of buffer, at least 1
/// @return buffer
FUNDO_API char* ipToString(IpAddress ip, char* buffer, unsigned long size);

/// Reads "a.b.c.d". The numbers are decimal and cut to their low 8 bits, so that 300.1.1.1 is 44.1.1.1. What
/// is missing counts as 0 and logs "param str %s is invalid" at level 3.
/// @param text may be null, which logs and gives 0
FUNDO_API IpAddress stringToIp(const char* text);

}  // namespace Tovra::Utils

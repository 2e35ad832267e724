#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Utils {

// Base64 with the alphabet of RFC 4648, "A-Za-z0-9+/", padded by "=" and without line breaks. Lengths are
// int: data of 1.5 GiB and more is not served. Nothing is logged. Any number of threads may call these
// functions. Decoding may write over its own text (data equal to coded); encoding needs separate buffers.

/// The size of buffer that base64Encode() needs, terminator included: ((length + 2) / 3) * 4 + 1.
/// @param length bytes of data
FUNDO_API int base64EncodeLen(int length);

/// Encodes data, padding and terminator included.
/// @param coded  receives base64EncodeLen(length) characters
/// @param length bytes of data; 0 or below writes the terminator alone
/// @return characters written, the terminator among them
FUNDO_API int base64Encode(char* coded, const char* data, int length);

/// A size of buffer that base64Decode() can do with, terminator included: ((n + 3) / 4) * 3 + 1 for n leading
/// characters of the alphabet. Reads the text once.
FUNDO_API int base64DecodeLen(const char* coded);

/// Decodes the longest start of a text that lies in the alphabet; the first other character ends it, whether
/// "=", a line break, a blank or the terminator, and nothing tells them apart. A single letter left over
/// behind groups of four is dropped.
/// @param data receives the bytes and a terminator, base64DecodeLen(coded) bytes at most
/// @return bytes written, without the terminator
FUNDO_API int base64Decode(char* data, const char* coded);

}  // namespace Tovra::Utils

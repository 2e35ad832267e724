// Pieces of whole texts, for conversions that go through units.
#pragma once

#include <cstddef>

namespace Tovra::Utils::Detail {

// Reads UTF-8 from src on, until a sequence ends at or behind stop; the last one may reach up to end. Bytes
// that begin no valid sequence are dropped. No zero byte may lie before end. Writes a unit for each byte at
// most.
// @return the units written; src is where to go on
size_t decodeUtf8(unsigned short* dst, const unsigned char*& src, const unsigned char* stop,
                  const unsigned char* end);

// utf8_wcstombs() that leaves what remains of the limit.
size_t encodeUtf8(unsigned char* dst, const unsigned short* src, int& maxlen);

}  // namespace Tovra::Utils::Detail

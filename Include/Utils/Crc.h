#pragma once

#include <cstddef>

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Utils {

// Checksums find accidents; they are no protection against somebody who changes data on purpose. Any number
// of threads may call these functions. No alignment is asked of the data; it may be null if length is 0.

/// Continues a CRC-16: reflected, polynomial 0xA001, no final complement.
/// @param seed   register to start from: 0 for a new sum, or the result for the bytes before
/// @param length bytes of data; 0 returns seed
/// @return the register behind the data; 0xBB3D for the text "123456789" and seed 0
FUNDO_API unsigned short crc16(unsigned short seed, const unsigned char* data, size_t length);

/// The CRC-32 of IEEE 802.3: reflected, polynomial 0xEDB88320, start all ones, final complement.
/// @param length bytes of data; 0 returns 0
/// @return the sum; 0xCBF43926 for the text "123456789"
FUNDO_API unsigned int crc32(const unsigned char* data, size_t length);

/// Continues a CRC-32, so that a stream can be summed in pieces: crc32(crc32(a), b) is the sum of a and b.
/// @param seed   0 for a new sum, or the result for the bytes before
/// @param length bytes of data; 0 returns seed
/// @return the sum of all bytes so far
FUNDO_API unsigned int crc32(unsigned int seed, const unsigned char* data, size_t length);

}  // namespace Tovra::Utils

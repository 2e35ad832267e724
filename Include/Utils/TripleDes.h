#pragma once

#include <cstddef>
#include <cstdint>

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Utils {

struct TripleDesInternal;

/// DES or triple DES over whole buffers, plain (ECB) or chained (CBC).
///
///   keyLength  blockType  cipher                              block
///   0          any        none: encrypt and decrypt fail      8
///   1 to 8     any        DES                                 8
///   9 to 16    Block8     triple DES with two keys            8
///   17 and up  Block8     triple DES with three keys          8
///   9 and up   Block16    the same over pairs, see D2des()    16
///
/// Nothing is kept between calls: with an initial vector, every call chains from it anew, and equal buffers
/// give equal results.
///
/// Every call loads the key into the registers of the process (Utils/Des.h), where it stays. Calls of
/// encrypt() exclude each other, on all objects, and so do calls of decrypt(). One direction does not exclude
/// the other, nor the plain functions: a program in which one thread encrypts while another decrypts excludes
/// them itself, or the results are wrong.
///
/// Here for formats and protocols that prescribe it; Utils/Des.h says why, and what to take instead. Neither
/// mode notices changed data, and ECB shows equal blocks as equal.
class FUNDO_API CTripleDes {
public:
    /// The size of a block with keys longer than 8 bytes.
    enum BlockType : int {
        Block8 = 0,  ///< 8 bytes
        Block16 = 1  ///< 16 bytes
    };

    /// Copies the key and the initial vector.
    /// @param key       at most 24 bytes of it are read; missing ones are zero
    /// @param keyLength bytes of key; above 24 counts as 24
    /// @param iv        one block to chain from, or null not to chain
    CTripleDes(const uint8_t* key, size_t keyLength, BlockType blockType, const uint8_t* iv);
    ~CTripleDes();
    CTripleDes(const CTripleDes&) = delete;
    CTripleDes& operator=(const CTripleDes&) = delete;

    /// Encrypts the whole blocks of a buffer. A null buffer is logged and not worked on, which the result
    /// does not show. At most 2 GiB a call.
    /// @param dst  receives size bytes, rounded down to whole blocks; may be src
    /// @param size bytes; a remainder is left out and logged as an error
    /// @return false if the key is empty (logged) or size is not a multiple of the block
    bool encrypt(uint8_t* dst, const uint8_t* src, size_t size);

    /// Decrypts the whole blocks of a buffer, otherwise as encrypt(). Buffers that overlap without being the
    /// same give wrong results when chained.
    bool decrypt(uint8_t* dst, const uint8_t* src, size_t size);

private:
    TripleDesInternal* m_internal;
};

}  // namespace Tovra::Utils

#pragma once

#include <cstddef>
#include <cstdint>

#include "Fundo/Fundo3/Export.h"

/// A SHA-1 digest under way. Plain data: copying it forks the digest.
struct SHA1_CTX {
    uint64_t count;            ///< bits so far
    uint32_t state[5];         ///< the registers
    uint32_t bufferLength;     ///< bytes waiting in buffer, below 64
    unsigned char buffer[64];  ///< the start of the next block
};

/// Starts the SHA-1 digest of FIPS 180-1.
/// @param ctx a context of the caller's, used by one thread at a time
FUNDO_API void SHA1Init(SHA1_CTX* ctx);

/// Takes more data.
/// @param data   may be null if length is 0
/// @param length bytes
FUNDO_API void SHA1Update(SHA1_CTX* ctx, const unsigned char* data, unsigned int length);

/// Pads the data and finishes. The context needs SHA1Init() before it can be used again.
/// @param digest receives 20 bytes; may be null
FUNDO_API void SHA1Final(SHA1_CTX* ctx, unsigned char* digest);

namespace Tovra::Utils {

struct Sha1Internal;

/// The SHA-1 digest of FIPS 180-1, fed in pieces; by the processor's SHA instructions where it has them.
///
/// SHA-1 is broken: two inputs of one digest have been made. It is here for formats and protocols that
/// prescribe it; for a new design take SHA-256 or better from a maintained cryptographic library.
///
/// After final() or hex() the object is finished, and the next data starts a new digest. An object serves one
/// thread at a time.
class FUNDO_API CSha1 {
public:
    CSha1();
    ~CSha1();
    CSha1(const CSha1&) = delete;
    CSha1& operator=(const CSha1&) = delete;

    /// Takes more data; on a finished object it starts a new digest first.
    /// @param data   null does nothing, and leaves a finished object finished
    /// @param length bytes, below 4 GiB a call (its upper bits are cut off); 0 does nothing
    void update(const unsigned char* data, size_t length);

    /// Finishes the digest, if it is not yet, and hands it out. Can be repeated.
    /// @param digest receives 20 bytes; null logs an error, "hash is NULL!\n", and does nothing
    /// @param length size of the buffer; below 20 logs an error, "len(%u) is invalid!\n", and does nothing
    void final(unsigned char* digest, size_t length);

    /// Finishes as final() does and hands the digest out as text.
    /// @param text   receives 40 lower-case hexadecimal digits; null logs an error, "str is NULL!\n", and
    /// does
    ///               nothing
    /// @param length size of the buffer; from 41 on a terminator follows the digits; below 40 logs an error,
    ///               "len(%u) is invalid!\n", and does nothing
    void hex(char* text, size_t length);

private:
    void finish();

    Sha1Internal* m_internal;
};

}  // namespace Tovra::Utils

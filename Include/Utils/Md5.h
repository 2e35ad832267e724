#pragma once

#include <cstddef>

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Utils {

struct Md5Internal;

/// The MD5 digest of RFC 1321, fed in pieces.
///
/// MD5 is broken: two inputs of one digest are made in seconds. It is here for formats and protocols that
/// prescribe it; for a new design take SHA-256 or better from a maintained cryptographic library.
///
///   state      left by
///   collecting final, hex (to finished); init
///   finished   update with data, init (both to collecting, from the start)
///
/// An object serves one thread at a time.
class FUNDO_API CMd5 {
public:
    CMd5();
    ~CMd5();
    CMd5(const CMd5&) = delete;
    CMd5& operator=(const CMd5&) = delete;

    /// Starts a new digest and forgets the former one.
    void init();

    /// Takes more data; on a finished object it starts a new digest first.
    /// @param data   null does nothing, and leaves a finished object finished
    /// @param length bytes, below 4 GiB a call (its upper bits are cut off); 0 does nothing
    void update(const unsigned char* data, size_t length);

    /// Finishes the digest, if it is not yet, and hands it out. Can be repeated.
    /// @param digest receives 16 bytes; null logs an error, "digest is NULL\n", and does nothing
    void final(unsigned char* digest);

    /// Finishes as final() does and hands the digest out as text.
    /// @param text receives 32 lower-case hexadecimal digits without a terminator; null logs an error,
    ///             "hash is NULL\n", and does nothing
    void hex(char* text);

private:
    void finish();

    Md5Internal* m_internal;
};

}  // namespace Tovra::Utils

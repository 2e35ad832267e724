#pragma once

#include <cstddef>
#include <cstdint>

#include "Fundo/Fundo3/Export.h"

// AES of FIPS 197 in the modes ECB, CBC, CFB8, CFB128 and CTR of SP 800-38A: CAes, one object for one stream,
// and below it the plain functions of the module.
//
// For every function here:
//   - in and out may be the same buffer, but must not overlap in another way; neither needs alignment, and
//     both may be null when length is 0;
//   - nothing is allocated, and key material is wiped where a comment says so;
//   - data belongs to one thread at a time, a const use included, since the chain state changes; different
//     objects and contexts may be used at once;
//   - the work is done by the AES instructions, in their vector form on long buffers, where the processor has
//     them, and by tables elsewhere. Results and chain state are the same to the byte.
//
// These modes keep no one from changing a message, ECB shows equal blocks, and the tables' access times
// depend on the key. They are here for data and peers that ask for them; a new design wants authenticated
// encryption (AES-GCM, ChaCha20-Poly1305) from a maintained cryptographic library.

namespace Tovra::Utils {

class AesInternal;

/// Encrypts or decrypts one stream with a key, a mode and an initial vector that are fixed at construction.
///
/// In the chained modes successive calls continue one stream, wherever the calls split it; encrypt() and
/// decrypt() share the chain state, so each direction needs an object of its own, and a stream is restarted
/// by a new object. An object belongs to one thread at a time. The destructor wipes key schedules and chain.
///
///   mode     length of a call   state between calls
///   ECB      multiple of 16     none
///   CBC      multiple of 16     the last block of cipher text
///   CFB8     any                the last 16 bytes of cipher text; one block operation a byte
///   CFB128   any                cipher text of the current block, and the place in it
///   CTR      any                the 128-bit big-endian counter, the key stream's block, the place in it
class FUNDO_API CAes {
public:
    /// Modes of operation, SP 800-38A.
    enum EncMode : int {
        ECB = 0,     ///< electronic code book
        CBC = 1,     ///< cipher block chaining, without padding
        CFB8 = 2,    ///< cipher feedback of bytes
        CFB128 = 3,  ///< cipher feedback of blocks
        CTR = 4      ///< counter
    };
    /// Length of the key in bits.
    enum KeyBits : int {
        Key128 = 128,  ///< 16 bytes
        Key192 = 192,  ///< 24 bytes
        Key256 = 256   ///< 32 bytes
    };

    /// Never fails by itself: after a mode or key length that does not exist, a null key (level 2, such as
    /// "AesCBC key is NULL\n") or lack of memory, each operation answers false.
    /// @param mode one of EncMode
    /// @param key  bits / 8 bytes, copied
    /// @param bits 128, 192 or 256
    /// @param iv   16 bytes, copied: the initial vector, in CTR mode the first counter; null means zeros. ECB
    ///             does not read it
    CAes(EncMode mode, const unsigned char* key, KeyBits bits, const unsigned char* iv);
    /// Wipes key schedules and chain state.
    ~CAes();
    CAes(const CAes&) = delete;
    CAes& operator=(const CAes&) = delete;

    /// Encrypts the next length bytes of the stream.
    /// @return false, with nothing written and the state unchanged, if the length is no multiple of 16 in ECB
    /// or CBC, or, with "aes init failed.\n" at level 2, if construction had failed
    bool encrypt(unsigned char* out, const unsigned char* in, size_t length);
    /// Decrypts the next length bytes of the stream; the result is that of encrypt().
    bool decrypt(unsigned char* out, const unsigned char* in, size_t length);

private:
    AesInternal* m_internal;
};

/// The plain AES module.
///
/// A mode argument is 1 to encrypt and anything else, by custom 0, to decrypt. Encryption, and both
/// directions of CFB and CTR, take a schedule of aes_setkey_enc(); decryption in ECB and CBC takes one of
/// aes_setkey_dec(). Schedules have the byte order of FIPS 197 on every path, so one made by the instructions
/// serves the tables and the other way round.
namespace AES {

/// A key schedule. A copy points into the record that it was copied from: copy only what does not move or
/// end before the copy, or set rk to the copy's buf.
struct aes_context {
    int nr;            ///< rounds: 10, 12 or 14
    uint32_t* rk;      ///< start of the round keys, always buf once a key is set
    uint32_t buf[68];  ///< the round keys, four words each
};

/// Zeroes the record.
FUNDO_API void aes_init(aes_context* ctx);
/// Wipes the record; null is allowed.
FUNDO_API void aes_free(aes_context* ctx);

/// Expands a key of keybits / 8 bytes for encryption. @return 0, or -1 with ctx unchanged if keybits is not
/// 128, 192 or 256
FUNDO_API int aes_setkey_enc(aes_context* ctx, const unsigned char* key, unsigned int keybits);
/// Expands a key for decryption: the equivalent inverse cipher of FIPS 197, 5.3.5. @return as aes_setkey_enc
FUNDO_API int aes_setkey_dec(aes_context* ctx, const unsigned char* key, unsigned int keybits);

/// Encrypts one block by tables, whatever the processor has. ctx holds an encryption schedule.
FUNDO_API void aes_encrypt(aes_context* ctx, const unsigned char in[16], unsigned char out[16]);
/// Decrypts one block by tables, whatever the processor has. ctx holds a decryption schedule.
FUNDO_API void aes_decrypt(aes_context* ctx, const unsigned char in[16], unsigned char out[16]);

/// One block of 16 bytes. @return 0
FUNDO_API int aes_crypt_ecb_block(aes_context* ctx, int mode, const unsigned char* in, unsigned char* out);
/// Blocks, each by itself. @return 0, or -1 with nothing written if length is no multiple of 16
FUNDO_API int aes_crypt_ecb(aes_context* ctx, int mode, size_t length, const unsigned char* in,
                            unsigned char* out);
/// Cipher block chaining; iv is left at the last block of cipher text. @return 0, or -1 with nothing written
/// if length is no multiple of 16
FUNDO_API int aes_crypt_cbc(aes_context* ctx, int mode, size_t length, unsigned char iv[16],
                            const unsigned char* in, unsigned char* out);
/// Cipher feedback of 128 bits, any length. ivOffset, below 16, is the place in the current block, 0 at the
/// start of a stream; before it iv holds cipher text, after it key stream. @return 0
FUNDO_API int aes_crypt_cfb128(aes_context* ctx, int mode, size_t length, size_t* ivOffset,
                               unsigned char iv[16], const unsigned char* in, unsigned char* out);
/// Cipher feedback of 8 bits, any length; iv is left at the last 16 bytes of cipher text. @return 0
FUNDO_API int aes_crypt_cfb8(aes_context* ctx, int mode, size_t length, unsigned char iv[16],
                             const unsigned char* in, unsigned char* out);
/// Counter mode, any length and both directions. counter is a 128-bit big-endian number, left at the next one
/// to be used; streamBlock is the last block of key stream, and counterOffset, below 16 and 0 at the start of
/// a stream, the place in it. @return 0
FUNDO_API int aes_crypt_ctr(aes_context* ctx, size_t length, size_t* counterOffset, unsigned char counter[16],
                            unsigned char streamBlock[16], const unsigned char* in, unsigned char* out);

/// Non-zero if a bit of what is set in ECX of the processor's CPUID leaf 1: 0x2000000 for the AES
/// instructions, 0x2 for PCLMULQDQ. Always 0 on other architectures.
FUNDO_API int aesni_has_support(unsigned int what);
/// One block with the AES instructions; by tables on a processor without them. @return 0
FUNDO_API int aesni_crypt_ecb(aes_context* ctx, int mode, const unsigned char* in, unsigned char* out);
/// Expands a key with the AES instructions; in portable code on a processor without them.
/// @param rk  room for 176, 208 or 240 bytes
/// @return 0, or -1 with nothing written if bits is not 128, 192 or 256
FUNDO_API int aesni_setkey_enc(unsigned char* rk, const unsigned char* key, size_t bits);
/// Round keys for decryption: the order reversed, the inner keys through inverse MixColumns.
/// @param inverse room for nr + 1 round keys; must not overlap forward
/// @param forward nr + 1 round keys of encryption
/// @param nr      10, 12 or 14
FUNDO_API void aesni_inverse_key(unsigned char* inverse, const unsigned char* forward, int nr);
/// c = a * b in the field of GCM, bits and bytes in the order of SP 800-38D; by PCLMULQDQ where present. c
/// may be a or b.
FUNDO_API void aesni_gcm_mult(unsigned char c[16], const unsigned char a[16], const unsigned char b[16]);

}  // namespace AES

}  // namespace Tovra::Utils

#pragma once

#include "Fundo/Fundo3/Export.h"

/// @file
/// DES of FIPS 46-3 in its single, double-length and triple forms, over key registers that the whole process
/// shares.
///
/// DES is broken by search of its 56-bit key, and its block of 64 bits is too short for much data under one
/// key even in the triple form. It is here for formats and protocols that prescribe it; look-ups by secret
/// data make it open to timing attacks besides. For a new design take an authenticated mode of AES, or
/// ChaCha20-Poly1305, from a maintained cryptographic library.
///
/// Nothing here locks: whoever uses these functions from several threads, or beside Tovra::Utils::CTripleDes,
/// which loads the same registers, excludes the others himself. Loaded keys stay in the registers.
///
/// A key direction edf is 0 to encrypt and 1 to decrypt. Input and output of a block function may be the same
/// buffer. Parity bits of keys are ignored. No pointer may be null.

/// The first key register: sixteen round keys in their order of use, two words of 32 bits each, the first for
/// the S-boxes 1, 3, 5, 7 and the second for 2, 4, 6, 8, six bits a byte from the highest byte on.
FUNDO_API extern unsigned long KnL[32];
/// The second key register.
FUNDO_API extern unsigned long KnR[32];
/// The third key register.
FUNDO_API extern unsigned long Kn3[32];
/// What the passphrase functions start from; not to be changed.
FUNDO_API extern unsigned char Df_Key[24];

/// Loads KnL from a key of 8 bytes.
FUNDO_API void deskey(unsigned char* key, short edf);
/// Copies KnL out, 32 words.
FUNDO_API void cpkey(unsigned long* into);
/// Loads KnL from 32 words.
FUNDO_API void usekey(unsigned long* from);
/// Transforms one block of 8 bytes through KnL.
FUNDO_API void des(unsigned char* in, unsigned char* out);
/// Transforms one block of two words in place: the whole of DES with the 32 words of a register.
FUNDO_API void desfunc(unsigned long* block, unsigned long* keys);

/// Loads all registers from a key of 16 bytes: its first half goes to KnL and Kn3, its second half, in the
/// other direction, to KnR.
FUNDO_API void des2key(unsigned char* key, short edf);
/// Transforms one block of 8 bytes through KnL, KnR and Kn3.
FUNDO_API void Ddes(unsigned char* in, unsigned char* out);
/// Transforms one block of 16 bytes: its halves each go through KnL, KnR and Kn3, and after the first and the
/// second pass the right word of the first half changes places with the left word of the second.
FUNDO_API void D2des(unsigned char* in, unsigned char* out);

/// Loads all registers from a key of 24 bytes. The middle 8 go to KnR in the other direction; the outer ones
/// go to KnL and Kn3 when encrypting and change places when decrypting.
FUNDO_API void des3key(unsigned char* key, short edf);
/// Copies KnL, KnR and Kn3 out, 96 words.
FUNDO_API void cp3key(unsigned long* into);
/// Loads KnL, KnR and Kn3 from 96 words.
FUNDO_API void use3key(unsigned long* from);

/// Makes a key of 8 bytes from a text. The registers are used and put back as they were.
/// @param passphrase a terminated text, seven bits a character; it is overwritten with zeros
/// @param key        receives the key
FUNDO_API void makekey(char* passphrase, unsigned char* key);
/// Makes a key of 16 bytes, otherwise as makekey().
FUNDO_API void make2key(char* passphrase, unsigned char* key);
/// Makes a key of 24 bytes, otherwise as makekey().
FUNDO_API void make3key(char* passphrase, unsigned char* key);

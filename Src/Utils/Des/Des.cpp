// The plain DES functions: registers, key schedules, single blocks, keys from texts.
#include "Utils/Des.h"

#include <algorithm>

#include "Utils/Des/DesCore.h"
#include "Utils/Wipe.h"

unsigned long KnL[32];
unsigned long KnR[32];
unsigned long Kn3[32];
unsigned char Df_Key[24] = {0x5e, 0x3a, 0x91, 0xc7, 0xd2, 0x0f, 0x68, 0x4b, 0x7c, 0xb1, 0xe0, 0x39,
                            0x5f, 0xa2, 0xd8, 0x46, 0x19, 0xf6, 0xc3, 0xa0, 0x7e, 0x4d, 0x2b, 0x58};

namespace {

using namespace Tovra::Utils;

constexpr size_t kRegister = 32;  // words
constexpr size_t kKey = 8;        // bytes
constexpr Des::KeyTables kKeyTables = Des::makeKeyTables();

bool isDecrypting(short edf) { return edf == 1; }
short opposite(short edf) { return isDecrypting(edf) ? 0 : 1; }

// The sums stay in processor registers: two rounds a vector, eight vectors.
void schedule(unsigned long* into, const unsigned char* key, short edf) {
    using TwoRounds = uint64_t __attribute__((vector_size(16), aligned(8), may_alias));
    constexpr size_t kPairs = Des::kRounds / 2;
    TwoRounds sum[kPairs] = {};
    for (size_t i = 0; i < 2 * kKey; ++i) {
        const unsigned half = i % 2 == 0 ? key[i / 2] >> 4 : key[i / 2] & 15;
        const auto* entry = reinterpret_cast<const TwoRounds*>(kKeyTables.half[i][half].round);
        for (size_t pair = 0; pair < kPairs; ++pair)
            sum[pair] ^= entry[pair];
    }
    for (size_t round = 0; round < Des::kRounds; ++round) {
        const uint64_t words = sum[round / 2][round % 2];
        unsigned long* at = into + 2 * (isDecrypting(edf) ? Des::kRounds - 1 - round : round);
        at[0] = static_cast<uint32_t>(words);
        at[1] = static_cast<uint32_t>(words >> 32);
    }
}

// The three key makers differ in the blocks of a key and in what they load first.
template <size_t Blocks>
void make(char* passphrase, unsigned char* key, void (*loadKey)(unsigned char*, short)) {
    constexpr size_t kSize = Blocks * kKey;
    unsigned long saved[3 * kRegister];
    cp3key(saved);
    loadKey(Df_Key, 0);
    std::copy_n(Df_Key, kSize, key);
    do {
        for (size_t i = 0; i < kSize && *passphrase != '\0'; ++i, ++passphrase) {
            key[i] = static_cast<unsigned char>(key[i] ^ (*passphrase & 0x7F));
            *passphrase = '\0';
        }
        Des::thrice<Blocks, 1>(key, key);
    } while (*passphrase != '\0');
    use3key(saved);
    wipe(saved, sizeof saved);
}

}  // namespace

void deskey(unsigned char* key, short edf) { schedule(KnL, key, edf); }

void cpkey(unsigned long* into) { std::copy_n(KnL, kRegister, into); }

void usekey(unsigned long* from) { std::copy_n(from, kRegister, KnL); }

void des(unsigned char* in, unsigned char* out) { Des::once<1>(in, out); }

void desfunc(unsigned long* block, unsigned long* keys) {
    // Words have 32 bits whatever the type has.
    Des::Blocks<1> one = {{static_cast<uint32_t>(block[0])}, {static_cast<uint32_t>(block[1])}};
    Des::begin(one);
    Des::rounds(one, keys);
    Des::end(one);
    block[0] = one.left[0];
    block[1] = one.right[0];
}

void des2key(unsigned char* key, short edf) {
    schedule(KnR, key + kKey, opposite(edf));
    schedule(KnL, key, edf);
    cpkey(Kn3);
}

void Ddes(unsigned char* in, unsigned char* out) { Des::thrice<1, 1>(in, out); }

void D2des(unsigned char* in, unsigned char* out) { Des::thrice<2, 1>(in, out); }

void des3key(unsigned char* key, short edf) {
    schedule(KnL, key + (isDecrypting(edf) ? 2 * kKey : 0), edf);
    schedule(KnR, key + kKey, opposite(edf));
    schedule(Kn3, key + (isDecrypting(edf) ? 0 : 2 * kKey), edf);
}

void cp3key(unsigned long* into) {
    for (const unsigned long* key : {KnL, KnR, Kn3})
        into = std::copy_n(key, kRegister, into);
}

void use3key(unsigned long* from) {
    for (unsigned long* key : {KnL, KnR, Kn3}) {
        std::copy_n(from, kRegister, key);
        from += kRegister;
    }
}

void makekey(char* passphrase, unsigned char* key) { make<1>(passphrase, key, des2key); }

void make2key(char* passphrase, unsigned char* key) { make<2>(passphrase, key, des2key); }

void make3key(char* passphrase, unsigned char* key) { make<3>(passphrase, key, des3key); }

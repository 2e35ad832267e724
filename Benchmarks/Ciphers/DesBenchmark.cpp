// The peer's plain DES functions are deprecated, and the only ones that need no module of their own.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <cstring>

#include "Case.h"
#include "Utils/Des.h"
#include "Utils/TripleDes.h"

#ifdef HAVE_OPENSSL
#include <openssl/des.h>
#include <openssl/evp.h>
#endif

namespace {

using Tovra::Utils::CTripleDes;

const std::vector<uint8_t> kKey = Bench::sample(24);
std::vector<uint8_t> s_out(Bench::kLarge);

CTripleDes& cipher(size_t keyLength, bool chained) {
    static CTripleDes s_ciphers[] = {{kKey.data(), 8, CTripleDes::Block8, nullptr},
                                     {kKey.data(), 8, CTripleDes::Block8, kKey.data()},
                                     {kKey.data(), 24, CTripleDes::Block8, nullptr},
                                     {kKey.data(), 24, CTripleDes::Block8, kKey.data()}};
    return s_ciphers[(keyLength == 24 ? 2 : 0) + (chained ? 1 : 0)];
}

void addOurs(const std::string& name, size_t keyLength, bool chained, bool encrypting, size_t size) {
    CTripleDes& object = cipher(keyLength, chained);
    Bench::add(("Fundo/" + name).c_str(),
               [&object, encrypting](const uint8_t* data, size_t length) {
                   encrypting ? object.encrypt(s_out.data(), data, length)
                              : object.decrypt(s_out.data(), data, length);
               },
               size);
}

#ifdef HAVE_OPENSSL

void scheduleKeys(DES_key_schedule* schedules, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const_DES_cblock key;
        std::memcpy(key, kKey.data() + 8 * i, 8);
        DES_set_key_unchecked(&key, &schedules[i]);
    }
}

// With a key schedule a call, as ours makes one.
void peerSingle(const uint8_t* data, size_t size, bool chained, int direction) {
    DES_key_schedule schedule;
    scheduleKeys(&schedule, 1);
    if (chained) {
        DES_cblock chain;
        std::memcpy(chain, kKey.data(), 8);
        DES_ncbc_encrypt(data, s_out.data(), static_cast<long>(size), &schedule, &chain, direction);
        return;
    }
    for (size_t at = 0; at < size; at += 8)
        DES_ecb_encrypt(reinterpret_cast<const_DES_cblock*>(const_cast<uint8_t*>(data) + at),
                        reinterpret_cast<DES_cblock*>(s_out.data() + at), &schedule, direction);
}

void addPeer(const std::string& name, size_t keyLength, bool chained, bool encrypting, size_t size) {
    if (keyLength == 8) {
        Bench::add(("OpenSSL/" + name).c_str(),
                   [=](const uint8_t* data, size_t length) {
                       peerSingle(data, length, chained, encrypting ? DES_ENCRYPT : DES_DECRYPT);
                   },
                   size);
        return;
    }
    EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
    EVP_CipherInit_ex(context, chained ? EVP_des_ede3_cbc() : EVP_des_ede3_ecb(), nullptr, kKey.data(),
                      kKey.data(), encrypting ? 1 : 0);
    EVP_CIPHER_CTX_set_padding(context, 0);
    Bench::add(("OpenSSL/" + name).c_str(),
               [context](const uint8_t* data, size_t length) {
                   int written = 0;
                   EVP_CipherInit_ex(context, nullptr, nullptr, kKey.data(), kKey.data(), -1);
                   EVP_CipherUpdate(context, s_out.data(), &written, data, static_cast<int>(length));
               },
               size);
    if (size == Bench::kLarge) return;
    // The same with the peer's key schedule made beforehand.
    Bench::add(("OpenSSL/" + name + "_peer_keyed").c_str(),
               [context](const uint8_t* data, size_t length) {
                   int written = 0;
                   EVP_CipherUpdate(context, s_out.data(), &written, data, static_cast<int>(length));
               },
               size);
}

#endif

void addAll() {
    for (const size_t keyLength : {size_t{8}, size_t{24}}) {
        for (const size_t size : {Bench::kLarge, size_t{16}}) {
            for (const bool chained : {false, true}) {
                for (const bool encrypting : {true, false}) {
                    const std::string name =
                        std::string(keyLength == 8 ? "Des/" : "TripleDes/") + (chained ? "cbc_" : "ecb_") +
                        (encrypting ? "encrypt" : "decrypt") + (size == 16 ? "_16B" : "_64KiB");
                    addOurs(name, keyLength, chained, encrypting, size);
                    if (keyLength == 24 && size == 16)
                        addOurs(name + "_peer_keyed", keyLength, chained, encrypting, size);
#ifdef HAVE_OPENSSL
                    addPeer(name, keyLength, chained, encrypting, size);
#endif
                }
            }
        }
    }
    Bench::add(
        "Fundo/Des/key_schedule",
        [](uint8_t* key, size_t) {
            key[3]++;
            deskey(key, 0);
        },
        8);
#ifdef HAVE_OPENSSL
    Bench::add(
        "OpenSSL/Des/key_schedule",
        [](uint8_t* key, size_t) {
            static DES_key_schedule s_schedule;
            key[3]++;
            DES_set_key_unchecked(reinterpret_cast<const_DES_cblock*>(key), &s_schedule);
        },
        8);
#endif
}

const bool s_added = (addAll(), true);

}  // namespace

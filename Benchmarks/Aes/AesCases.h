#pragma once

#include <benchmark/benchmark.h>
#ifdef HAVE_OPENSSL
#include <openssl/evp.h>
#endif

#include <cstdint>
#include <string>
#include <vector>

#include "Utils/Aes.h"
#include "Utils/CpuFeatures.h"

// Cases of AES: a mode, a key length and a direction, on buffers of 64 KiB and of one block.
namespace AesCases {

namespace Cpu = Tovra::Utils::Cpu;
using Tovra::Utils::CAes;

struct Case {
    const char* name;
    CAes::EncMode mode;
    const char* peer;  // the cipher's name in OpenSSL
    unsigned bits;
    bool encrypting;
};

constexpr Case kCases[] = {
    {"ecb128_encrypt", CAes::ECB, "AES-128-ECB", 128, true},
    {"ecb128_decrypt", CAes::ECB, "AES-128-ECB", 128, false},
    {"ecb256_encrypt", CAes::ECB, "AES-256-ECB", 256, true},
    {"ecb256_decrypt", CAes::ECB, "AES-256-ECB", 256, false},
    {"cbc128_encrypt", CAes::CBC, "AES-128-CBC", 128, true},
    {"cbc128_decrypt", CAes::CBC, "AES-128-CBC", 128, false},
    {"cbc256_encrypt", CAes::CBC, "AES-256-CBC", 256, true},
    {"cbc256_decrypt", CAes::CBC, "AES-256-CBC", 256, false},
    {"ctr128", CAes::CTR, "AES-128-CTR", 128, true},
    {"ctr256", CAes::CTR, "AES-256-CTR", 256, true},
    {"cfb128_encrypt", CAes::CFB128, "AES-128-CFB", 128, true},
    {"cfb128_decrypt", CAes::CFB128, "AES-128-CFB", 128, false},
    {"cfb8_encrypt", CAes::CFB8, "AES-128-CFB8", 128, true},
    {"cfb8_decrypt", CAes::CFB8, "AES-128-CFB8", 128, false},
};

constexpr std::size_t kSizes[] = {65536, 16};

inline const std::uint8_t kKey[32] = {1, 2, 3};
inline const std::uint8_t kIv[16] = {4, 5, 6};

inline void ours(benchmark::State& state, const Case& what, std::size_t size, unsigned features) {
    const Cpu::CRestriction restriction(features);
    std::vector<std::uint8_t> in(size, 7), out(size);
    CAes aes(what.mode, kKey, static_cast<CAes::KeyBits>(what.bits), kIv);
    for (auto _ : state) {
        const bool ok = what.encrypting ? aes.encrypt(out.data(), in.data(), size)
                                        : aes.decrypt(out.data(), in.data(), size);
        benchmark::DoNotOptimize(ok);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(size));
}

#ifdef HAVE_OPENSSL
inline void openSsl(benchmark::State& state, const Case& what, std::size_t size) {
    std::vector<std::uint8_t> in(size, 7), out(size);
    EVP_CIPHER* cipher = EVP_CIPHER_fetch(nullptr, what.peer, nullptr);
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    EVP_CipherInit_ex(ctx, cipher, nullptr, kKey, kIv, what.encrypting ? 1 : 0);
    EVP_CIPHER_CTX_set_padding(ctx, 0);
    int written = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            EVP_CipherUpdate(ctx, out.data(), &written, in.data(), static_cast<int>(size)));
        benchmark::ClobberMemory();
    }
    EVP_CIPHER_CTX_free(ctx);
    EVP_CIPHER_free(cipher);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(size));
}
#endif

// Registers all cases of a subject, ours under a restriction.
inline void addSubject(const std::string& subject, unsigned features) {
    for (const Case& what : kCases) {
        for (const std::size_t size : kSizes) {
            const std::string name = "/" + subject + "/" + what.name + "_" + std::to_string(size);
            benchmark::RegisterBenchmark(("Fundo" + name).c_str(), ours, what, size, features);
#ifdef HAVE_OPENSSL
            benchmark::RegisterBenchmark(("OpenSSL" + name).c_str(), openSsl, what, size);
#endif
        }
    }
}

}  // namespace AesCases

#include "Case.h"
#include "Utils/Md5.h"
#include "Utils/Sha1.h"

#ifdef HAVE_OPENSSL
#include <openssl/evp.h>
#endif

namespace {

namespace Cpu = Tovra::Utils::Cpu;

#ifdef HAVE_OPENSSL
void addPeer(const char* name, const EVP_MD* algorithm, size_t size) {
    static EVP_MD_CTX* s_context = EVP_MD_CTX_new();
    Bench::add(
        name,
        [algorithm](const uint8_t* data, size_t length) {
            unsigned char digest[EVP_MAX_MD_SIZE];
            EVP_DigestInit_ex(s_context, algorithm, nullptr);
            EVP_DigestUpdate(s_context, data, length);
            EVP_DigestFinal_ex(s_context, digest, nullptr);
            benchmark::DoNotOptimize(digest);
        },
        size);
}
#endif

void addHashes() {
    const auto md5 = [](const uint8_t* data, size_t size) {
        static Tovra::Utils::CMd5 s_hash;
        unsigned char digest[16];
        s_hash.update(data, size);
        s_hash.final(digest);
        benchmark::DoNotOptimize(digest);
    };
    const auto sha1 = [](const uint8_t* data, size_t size) {
        static Tovra::Utils::CSha1 s_hash;
        unsigned char digest[20];
        s_hash.update(data, size);
        s_hash.final(digest, sizeof digest);
        benchmark::DoNotOptimize(digest);
    };
    Bench::add("Fundo/Md5/64KiB", md5);
    Bench::add("Fundo/Md5/16B", md5, 16);
    Bench::add("Fundo/Sha1/64KiB", sha1, Bench::kLarge, Cpu::kSha);
    Bench::add("Fundo/Sha1/16B", sha1, 16, Cpu::kSha);
    Bench::add("Fundo/Sha1/portable", sha1, Bench::kLarge, Cpu::kPortable);
#ifdef HAVE_OPENSSL
    addPeer("OpenSSL/Md5/64KiB", EVP_md5(), Bench::kLarge);
    addPeer("OpenSSL/Md5/16B", EVP_md5(), 16);
    addPeer("OpenSSL/Sha1/64KiB", EVP_sha1(), Bench::kLarge);
    addPeer("OpenSSL/Sha1/16B", EVP_sha1(), 16);
#endif
}

const bool s_added = (addHashes(), true);

}  // namespace

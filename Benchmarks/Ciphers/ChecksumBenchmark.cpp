#include <string>

#include "Case.h"
#include "Utils/Base64.h"
#include "Utils/Crc.h"

#ifdef HAVE_OPENSSL
#include <openssl/evp.h>
#endif
#ifdef HAVE_ZLIB
#include <zlib.h>
#endif
#ifdef HAVE_ISAL
#include <isa-l/crc.h>
#endif

namespace {

namespace Ours = Tovra::Utils;
namespace Cpu = Tovra::Utils::Cpu;

// The definition: one look-up a byte.
unsigned short plainCrc16(const uint8_t* data, size_t size) {
    static const std::vector<unsigned short> s_table = [] {
        std::vector<unsigned short> table;
        for (unsigned i = 0; i < 256; ++i) {
            unsigned crc = i;
            for (int bit = 0; bit < 8; ++bit)
                crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xA001u : 0);
            table.push_back(static_cast<unsigned short>(crc));
        }
        return table;
    }();
    const unsigned short* table = s_table.data();
    unsigned short crc = 0;
    for (size_t i = 0; i < size; ++i)
        crc = static_cast<unsigned short>((crc >> 8) ^ table[(crc ^ data[i]) & 0xFF]);
    return crc;
}

void addCrcs() {
    const auto crc32 = [](const uint8_t* data, size_t size) {
        benchmark::DoNotOptimize(Ours::crc32(data, size));
    };
    const auto crc16 = [](const uint8_t* data, size_t size) {
        benchmark::DoNotOptimize(Ours::crc16(0, data, size));
    };
    const auto plain = [](const uint8_t* data, size_t size) {
        benchmark::DoNotOptimize(plainCrc16(data, size));
    };
    Bench::add("Fundo/Crc32/vector", crc32, Bench::kLarge, Cpu::kClmul | Cpu::kVclmul512);
    Bench::add("Fundo/Crc32/clmul", crc32, Bench::kLarge, Cpu::kClmul);
    Bench::add("Fundo/Crc32/portable", crc32, Bench::kLarge, Cpu::kPortable);
    Bench::add("Fundo/Crc16/vector", crc16, Bench::kLarge, Cpu::kClmul | Cpu::kVclmul512);
    Bench::add("Fundo/Crc16/clmul", crc16, Bench::kLarge, Cpu::kClmul);
    Bench::add("Fundo/Crc16/portable", crc16, Bench::kLarge, Cpu::kPortable);
    for (const char* name : {"Table/Crc16/vector", "Table/Crc16/clmul", "Table/Crc16/portable"})
        Bench::add(name, plain);
#ifdef HAVE_ISAL
    for (const char* name : {"Isal/Crc32/vector", "Isal/Crc32/clmul"})
        Bench::add(name, [](const uint8_t* data, size_t size) {
            benchmark::DoNotOptimize(crc32_gzip_refl(0, data, size));
        });
#endif
#ifdef HAVE_ZLIB
    Bench::add("Zlib/Crc32/portable", [](const uint8_t* data, size_t size) {
        benchmark::DoNotOptimize(::crc32(0, data, static_cast<uInt>(size)));
    });
#endif
}

void addBase64() {
    static std::vector<char> s_coded(Bench::kLarge * 2);
    static std::vector<char> s_data(Bench::kLarge * 2);
    const std::vector<uint8_t> bytes = Bench::sample(Bench::kLarge);
    static std::string s_text(Bench::kLarge * 2, '\0');
    s_text.resize(
        static_cast<size_t>(Ours::base64Encode(s_text.data(), reinterpret_cast<const char*>(bytes.data()),
                                               static_cast<int>(bytes.size()) / 3 * 3)) -
        1);
    const auto encode = [](const uint8_t* data, size_t size) {
        Ours::base64Encode(s_coded.data(), reinterpret_cast<const char*>(data), static_cast<int>(size));
    };
    const auto decode = [](const uint8_t*, size_t) { Ours::base64Decode(s_data.data(), s_text.c_str()); };
    Bench::add("Fundo/Base64/encode_vbmi", encode, Bench::kLarge, Cpu::kVbmi);
    Bench::add("Fundo/Base64/encode_avx2", encode, Bench::kLarge, Cpu::kAvx2);
    Bench::add("Fundo/Base64/encode_portable", encode, Bench::kLarge, Cpu::kPortable);
    Bench::add("Fundo/Base64/decode_vbmi", decode, Bench::kLarge, Cpu::kVbmi);
    Bench::add("Fundo/Base64/decode_avx2", decode, Bench::kLarge, Cpu::kAvx2);
    Bench::add("Fundo/Base64/decode_portable", decode, Bench::kLarge, Cpu::kPortable);
#ifdef HAVE_OPENSSL
    for (const char* name :
         {"OpenSSL/Base64/encode_vbmi", "OpenSSL/Base64/encode_avx2", "OpenSSL/Base64/encode_portable"})
        Bench::add(name, [](const uint8_t* data, size_t size) {
            EVP_EncodeBlock(reinterpret_cast<unsigned char*>(s_coded.data()), data, static_cast<int>(size));
        });
    for (const char* name :
         {"OpenSSL/Base64/decode_vbmi", "OpenSSL/Base64/decode_avx2", "OpenSSL/Base64/decode_portable"})
        Bench::add(name, [](const uint8_t*, size_t) {
            EVP_DecodeBlock(reinterpret_cast<unsigned char*>(s_data.data()),
                            reinterpret_cast<const unsigned char*>(s_text.data()),
                            static_cast<int>(s_text.size()));
        });
#endif
}

const bool s_added = (addCrcs(), addBase64(), true);

}  // namespace

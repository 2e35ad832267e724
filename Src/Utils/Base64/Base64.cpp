// The public functions, the ends of texts, and the portable kernel.
#include "Utils/Base64.h"

#include "Utils/Base64/Base64Kernels.h"

namespace Tovra::Utils {
namespace Base64 {
namespace {

size_t encode(char* coded, const char* data, size_t length) {
    size_t done = 0;
    for (; length - done >= 3; done += 3, coded += 4) {
        const auto byte = [&](size_t i) {
            return static_cast<unsigned>(static_cast<uint8_t>(data[done + i]));
        };
        const unsigned group = byte(0) << 16 | byte(1) << 8 | byte(2);
        coded[0] = basis_64[group >> 18];
        coded[1] = basis_64[(group >> 12) & 63];
        coded[2] = basis_64[(group >> 6) & 63];
        coded[3] = basis_64[group & 63];
    }
    return done;
}

// How many of the next characters belong to the text, 4 at most, and their values.
unsigned take(const char* coded, uint8_t (&values)[4]) {
    for (unsigned i = 0; i < 4; ++i) {
        values[i] = valueOf(coded[i]);
        if (values[i] == kOutside) return i;
    }
    return 4;
}

// Writes some of the three bytes of a group of values.
void putBytes(char* data, const uint8_t (&values)[4], unsigned count) {
    const unsigned group = static_cast<unsigned>(values[0]) << 18 | static_cast<unsigned>(values[1]) << 12 |
                           static_cast<unsigned>(values[2]) << 6 | values[3];
    for (unsigned i = 0; i < count; ++i)
        data[i] = static_cast<char>(group >> (16 - 8 * i));
}

size_t decode(char* data, const char* coded) {
    uint8_t values[4];
    size_t done = 0;
    for (; take(coded + done, values) == 4; done += 4, data += 3)
        putBytes(data, values, 3);
    return done;
}

size_t measure(const char* coded) {
    size_t length = 0;
    while (valueOf(coded[length]) != kOutside)
        ++length;
    return length;
}

// The last one or two bytes and their padding.
char* encodeEnd(char* coded, const char* data, size_t length) {
    if (length == 0) return coded;
    const unsigned first = static_cast<uint8_t>(data[0]);
    const unsigned second = length > 1 ? static_cast<uint8_t>(data[1]) : 0;
    coded[0] = basis_64[first >> 2];
    coded[1] = basis_64[(first & 3) << 4 | second >> 4];
    coded[2] = length > 1 ? basis_64[(second & 15) << 2] : '=';
    coded[3] = '=';
    return coded + 4;
}

// The last characters, fewer than four: none or one give nothing.
char* decodeEnd(char* data, const char* coded) {
    uint8_t values[4] = {};
    const unsigned left = take(coded, values);
    if (left < 2) return data;
    if (left == 2) values[2] = 0;
    values[3] = 0;
    putBytes(data, values, left - 1);
    return data + left - 1;
}

}  // namespace

const Kernel kPortableKernel = {encode, decode, measure};

const Kernel& kernel() {
#if FUNDO_X86_64
    if (Cpu::has(Cpu::kVbmi)) return kVbmiKernel;
    if (Cpu::has(Cpu::kAvx2)) return kAvx2Kernel;
#endif
    return kPortableKernel;
}

}  // namespace Base64

int base64EncodeLen(int length) { return ((length + 2) / 3) * 4 + 1; }

int base64Encode(char* coded, const char* data, int length) {
    const size_t size = length > 0 ? static_cast<size_t>(length) : 0;
    size_t done = Base64::kernel().encode(coded, data, size);
    done += Base64::kPortableKernel.encode(coded + done / 3 * 4, data + done, size - done);
    char* end = Base64::encodeEnd(coded + done / 3 * 4, data + done, size - done);
    *end = '\0';
    return static_cast<int>(end - coded) + 1;
}

int base64DecodeLen(const char* coded) {
    size_t length = Base64::kernel().measure(coded);
    length += Base64::kPortableKernel.measure(coded + length);
    return static_cast<int>((length + 3) / 4 * 3 + 1);
}

int base64Decode(char* data, const char* coded) {
    size_t done = Base64::kernel().decode(data, coded);
    done += Base64::kPortableKernel.decode(data + done / 4 * 3, coded + done);
    char* end = Base64::decodeEnd(data + done / 4 * 3, coded + done);
    *end = '\0';
    return static_cast<int>(end - data);
}

}  // namespace Tovra::Utils

// The alphabet of Base64 and the kernels that do the bulk of a text.
//
// A kernel does as many whole steps as it can and answers how far it came; the portable one goes on from
// there down to the last whole group, and the public functions do what remains.
//
// The length of a text is not known when decoding begins: it ends at the first character outside of the
// alphabet, and what lies behind that may not be readable. A kernel therefore looks a whole step ahead only
// where readableSteps() allows it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Utils/CpuFeatures.h"

namespace Tovra::Utils::Base64 {

inline constexpr char basis_64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t kOutside = 64;

// The value of each character, kOutside for those that have none.
struct Values {
    uint8_t of[256];
};
constexpr Values makeValues() {
    Values values{};
    for (uint8_t& value : values.of)
        value = kOutside;
    for (unsigned i = 0; i < 64; ++i)
        values.of[static_cast<unsigned char>(basis_64[i])] = static_cast<uint8_t>(i);
    return values;
}
inline constexpr Values pr2six = makeValues();

inline uint8_t valueOf(char character) { return pr2six.of[static_cast<unsigned char>(character)]; }

struct Kernel {
    // Encodes from data; answers the bytes taken, a multiple of 3.
    size_t (*encode)(char* coded, const char* data, size_t length);
    // Decodes until a step holds another character; answers the characters taken, a multiple of 4.
    size_t (*decode)(char* data, const char* coded);
    // The characters up to the step that holds another one.
    size_t (*measure)(const char* coded);
};

extern const Kernel kPortableKernel;
#if FUNDO_X86_64
extern const Kernel kAvx2Kernel;
extern const Kernel kVbmiKernel;
#endif

// The fastest on this processor.
const Kernel& kernel();

// How many steps can be read from text on: those that lie in its page, or one over the page's end if all
// before that end belongs to the text, which then goes on into the next page.
template <size_t Step>
size_t readableSteps(const char* text) {
    constexpr uintptr_t kPage = 4096;  // the smallest there is
    const size_t left = kPage - reinterpret_cast<uintptr_t>(text) % kPage;
    if (left >= Step) return left / Step;
    for (size_t i = 0; i < left; ++i) {
        if (valueOf(text[i]) == kOutside) return 0;
    }
    return 1;
}

// How far the first step of encoding goes so that the others store aligned words, in bytes: a whole step at
// most, and at least a group.
template <size_t Step>
size_t bytesToAlign(const char* coded) {
    return (Step - reinterpret_cast<uintptr_t>(coded) % Step + 3) / 4 * 3;
}

}  // namespace Tovra::Utils::Base64

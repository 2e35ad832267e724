// CAes: makes the class of its mode and passes calls on.
#include <iterator>
#include <new>

#include "Fundo3/Report.h"
#include "Utils/Aes/AesInternal.h"

namespace Tovra::Utils {

static constexpr char kSource[] = "Src/Utils/Aes/Aes";

namespace {

using Make = AesInternal* (*)(const unsigned char* key, unsigned bits, const unsigned char* iv);

template <class Mode>
AesInternal* make(const unsigned char* key, unsigned bits, const unsigned char* iv) {
    return new (std::nothrow) Mode(key, bits, iv);
}

// By CAes::EncMode.
constexpr Make kMakers[] = {make<AES::CAesECB>, make<AES::CAesCBC>, make<AES::CAesCFB8>,
                            make<AES::CAesCFB128>, make<AES::CAesCTR>};

AesInternal* makeMode(unsigned mode, const unsigned char* key, unsigned bits, const unsigned char* iv) {
    return mode < std::size(kMakers) ? kMakers[mode](key, bits, iv) : nullptr;
}

}  // namespace

bool AES::refuse(const char* function, const char* text) {
    FUNDO_REPORT_IF(Fundo::Detail::kError,
                    Fundo::Detail::report(Fundo::Detail::kError, {kSource, function, __LINE__}, "%s", text));
    return false;
}

CAes::CAes(EncMode mode, const unsigned char* key, KeyBits bits, const unsigned char* iv)
    : m_internal(makeMode(static_cast<unsigned>(mode), key, static_cast<unsigned>(bits), iv)) {}

CAes::~CAes() { delete m_internal; }

bool CAes::encrypt(unsigned char* out, const unsigned char* in, size_t length) {
    return m_internal != nullptr ? m_internal->encrypt(out, in, length)
                                 : AES::refuse("encrypt", AES::kInitFailed);
}

bool CAes::decrypt(unsigned char* out, const unsigned char* in, size_t length) {
    return m_internal != nullptr ? m_internal->decrypt(out, in, length)
                                 : AES::refuse("decrypt", AES::kInitFailed);
}

}  // namespace Tovra::Utils

// What stands behind CAes: one class per mode, made from one template over the mode's record.
#pragma once

#include <cstring>

#include "Utils/Aes.h"
#include "Utils/Wipe.h"

namespace Tovra::Utils {

class AesInternal {
public:
    AesInternal() = default;
    virtual ~AesInternal() = default;
    AesInternal(const AesInternal&) = delete;
    AesInternal& operator=(const AesInternal&) = delete;

    virtual bool encrypt(unsigned char* out, const unsigned char* in, size_t length) = 0;
    virtual bool decrypt(unsigned char* out, const unsigned char* in, size_t length) = 0;

protected:
    bool m_valid = false;  // the key schedules are made
};

namespace AES {

// Logs an error of CAes in the name of a function. Answers false.
bool refuse(const char* function, const char* text);

inline constexpr char kInitFailed[] = "aes init failed.\n";

// The schedules of a mode that uses the inverse cipher to decrypt.
struct BothSchedules {
    aes_context forward{};
    aes_context inverse{};

    bool setKey(const unsigned char* key, unsigned bits) {
        return aes_setkey_enc(&forward, key, bits) == 0 && aes_setkey_dec(&inverse, key, bits) == 0;
    }
    aes_context* schedule(int mode) { return mode == 1 ? &forward : &inverse; }
};

// The schedule of a mode that runs the cipher forward in both directions.
struct ForwardSchedule {
    aes_context forward{};

    bool setKey(const unsigned char* key, unsigned bits) { return aes_setkey_enc(&forward, key, bits) == 0; }
};

// The modes' records. run() is the module's function on the record; start() is where the initial vector goes.

struct EcbMode : BothSchedules {
    static constexpr char kNoKey[] = "AesECB key is NULL\n";

    unsigned char* start() { return nullptr; }
    int run(int mode, unsigned char* out, const unsigned char* in, size_t length) {
        return aes_crypt_ecb(schedule(mode), mode, length, in, out);
    }
};

struct CbcMode : BothSchedules {
    static constexpr char kNoKey[] = "AesCBC key is NULL\n";
    unsigned char iv[16]{};

    unsigned char* start() { return iv; }
    int run(int mode, unsigned char* out, const unsigned char* in, size_t length) {
        return aes_crypt_cbc(schedule(mode), mode, length, iv, in, out);
    }
};

struct Cfb8Mode : ForwardSchedule {
    static constexpr char kNoKey[] = "AesCFB8 key is NULL\n";
    unsigned char iv[16]{};

    unsigned char* start() { return iv; }
    int run(int mode, unsigned char* out, const unsigned char* in, size_t length) {
        return aes_crypt_cfb8(&forward, mode, length, iv, in, out);
    }
};

struct Cfb128Mode : ForwardSchedule {
    static constexpr char kNoKey[] = "AesCFB128 key is NULL\n";
    size_t ivOffset = 0;
    unsigned char iv[16]{};

    unsigned char* start() { return iv; }
    int run(int mode, unsigned char* out, const unsigned char* in, size_t length) {
        return aes_crypt_cfb128(&forward, mode, length, &ivOffset, iv, in, out);
    }
};

struct CtrMode : ForwardSchedule {
    static constexpr char kNoKey[] = "AesCTR key is NULL\n";
    size_t counterOffset = 0;
    unsigned char counter[16]{};
    unsigned char streamBlock[16]{};

    unsigned char* start() { return counter; }
    int run(int, unsigned char* out, const unsigned char* in, size_t length) {
        return aes_crypt_ctr(&forward, length, &counterOffset, counter, streamBlock, in, out);
    }
};

template <class Mode>
class TAesMode final : public AesInternal {
public:
    TAesMode(const unsigned char* key, unsigned bits, const unsigned char* iv) {
        if (key == nullptr) {
            refuse("CAes", Mode::kNoKey);
            return;
        }
        m_valid = m_mode.setKey(key, bits);
        unsigned char* start = m_mode.start();
        if (iv != nullptr && start != nullptr) std::memcpy(start, iv, 16);
    }
    ~TAesMode() override { wipe(&m_mode, sizeof m_mode); }

    bool encrypt(unsigned char* out, const unsigned char* in, size_t length) override {
        return m_valid ? m_mode.run(1, out, in, length) == 0 : refuse("encrypt", kInitFailed);
    }
    bool decrypt(unsigned char* out, const unsigned char* in, size_t length) override {
        return m_valid ? m_mode.run(0, out, in, length) == 0 : refuse("decrypt", kInitFailed);
    }

private:
    Mode m_mode;
};

using CAesECB = TAesMode<EcbMode>;
using CAesCBC = TAesMode<CbcMode>;
using CAesCFB8 = TAesMode<Cfb8Mode>;
using CAesCFB128 = TAesMode<Cfb128Mode>;
using CAesCTR = TAesMode<CtrMode>;

}  // namespace AES

}  // namespace Tovra::Utils

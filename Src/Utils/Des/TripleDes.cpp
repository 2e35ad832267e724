// Buffers through the DES functions: one loop, made for each cipher and each way of chaining.
#include "Utils/TripleDes.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"
#include "Utils/Des/DesCore.h"
#include "Utils/Wipe.h"

namespace Tovra::Utils {

static constexpr char kSource[] = "Src/Utils/TripleDes";

namespace {

using namespace Fundo;

constexpr size_t kMaxKey = 24;
constexpr size_t kMaxBlock = 16;

using BlockFunction = void (*)(unsigned char* in, unsigned char* out);

// The ciphers, each for as many blocks side by side as wanted.
struct Single {
    template <size_t Count>
    static void run(const uint8_t* in, uint8_t* out) {
        Des::once<Count>(in, out);
    }
};
template <size_t Group>
struct Triple {
    template <size_t Count>
    static void run(const uint8_t* in, uint8_t* out) {
        Des::thrice<Group, Count>(in, out);
    }
};

template <size_t Size>
struct XorOp {
    static void run(uint8_t* out, const uint8_t* a, const uint8_t* b) {
        for (size_t i = 0; i < Size; i += sizeof(uint64_t)) {
            uint64_t first, second;
            std::memcpy(&first, a + i, sizeof first);
            std::memcpy(&second, b + i, sizeof second);
            first ^= second;
            std::memcpy(out + i, &first, sizeof first);
        }
    }
};

// The modes. kIndependent: no block waits for the result of another.
struct EBCEnDeCryptOp {
    static constexpr bool kIndependent = true;

    template <size_t BlockSize, class DesFunc, size_t Count>
    static void run(uint8_t*, uint8_t* dst, const uint8_t* src) {
        DesFunc::template run<Count>(src, dst);
    }
};

template <bool Encrypting>
struct CBCEnDeCryptOp;

template <>
struct CBCEnDeCryptOp<true> {
    static constexpr bool kIndependent = false;

    template <size_t BlockSize, class DesFunc, size_t Count>
    static void run(uint8_t* prev, uint8_t* dst, const uint8_t* src) {
        XorOp<BlockSize>::run(prev, src, prev);
        DesFunc::template run<1>(prev, prev);
        std::copy_n(prev, BlockSize, dst);
    }
};

template <>
struct CBCEnDeCryptOp<false> {
    static constexpr bool kIndependent = true;

    // The blocks to chain with are kept, since dst may be src.
    template <size_t BlockSize, class DesFunc, size_t Count>
    static void run(uint8_t* prev, uint8_t* dst, const uint8_t* src) {
        constexpr size_t kSize = BlockSize * Count;
        uint8_t chain[BlockSize + kSize];
        std::copy_n(prev, BlockSize, chain);
        std::copy_n(src, kSize, chain + BlockSize);
        uint8_t tmp[kSize];
        DesFunc::template run<Count>(src, tmp);
        XorOp<kSize>::run(dst, tmp, chain);
        std::copy_n(chain + kSize, BlockSize, prev);
    }
};

template <size_t BlockSize, class DesFunc, class CryptOp>
void en_de_crypt(uint8_t* dst, const uint8_t* src, size_t size, const uint8_t* iv) {
    constexpr size_t kSide = CryptOp::kIndependent ? 4 * Des::kBlockBytes / BlockSize : 1;
    uint8_t prev[BlockSize];
    std::copy_n(iv, BlockSize, prev);
    // Contract: the count is a signed int, and from 2 GiB on nothing is done.
    int remain = static_cast<int>(size);
    const auto inStepsOf = [&](auto count) {
        constexpr size_t kStep = count * BlockSize;
        for (; remain >= static_cast<int>(kStep); remain -= static_cast<int>(kStep)) {
            CryptOp::template run<BlockSize, DesFunc, count>(prev, dst, src);
            src += kStep;
            dst += kStep;
        }
    };
    inStepsOf(std::integral_constant<size_t, kSide>());
    if (kSide > 2) inStepsOf(std::integral_constant<size_t, 2>());
    if (remain <= 0) return;
    FUNDO_ASSERT_IN(remain >= (int)BlockSize, "en_de_crypt");
    inStepsOf(std::integral_constant<size_t, 1>());
}

template <size_t BlockSize, class DesFunc>
void inMode(bool cbc, bool encrypting, uint8_t* dst, const uint8_t* src, size_t size, const uint8_t* iv) {
    if (!cbc) return en_de_crypt<BlockSize, DesFunc, EBCEnDeCryptOp>(dst, src, size, iv);
    if (encrypting) return en_de_crypt<BlockSize, DesFunc, CBCEnDeCryptOp<true>>(dst, src, size, iv);
    en_de_crypt<BlockSize, DesFunc, CBCEnDeCryptOp<false>>(dst, src, size, iv);
}

void reportNull(const char* text) {
    const Fundo::Detail::Site site{kSource, "en_de_crypt", __LINE__};
    FUNDO_REPORT_IF(Fundo::Detail::kError, Fundo::Detail::report(Fundo::Detail::kError, site, "%s", text));
}

bool areBuffersGiven(const uint8_t* dst, const uint8_t* src, const uint8_t* iv) {
    if (src == nullptr) {
        reportNull("en_de_crypt(): src is NULL!!\n");
        return false;
    }
    if (dst == nullptr) {
        reportNull("en_de_crypt(): dst is NULL!!\n");
        return false;
    }
    FUNDO_ASSERT_IN(iv != NULL, "en_de_crypt");
    return true;
}

void do_en_de_crypt(bool cbc, bool encrypting, BlockFunction func, uint8_t* dst, const uint8_t* src,
                    size_t size, const uint8_t* iv) {
    if (!areBuffersGiven(dst, src, iv)) return;
    if (func == des) return inMode<8, Single>(cbc, encrypting, dst, src, size, iv);
    if (func == Ddes) return inMode<8, Triple<1>>(cbc, encrypting, dst, src, size, iv);
    inMode<16, Triple<2>>(cbc, encrypting, dst, src, size, iv);
}

}  // namespace

struct TripleDesInternal {
    uint8_t key[kMaxKey];
    size_t keyLength;
    uint8_t iv[kMaxBlock];
    bool useIv;
    BlockFunction desFunc;

    size_t blockSize() const { return desFunc == D2des ? 16 : 8; }
    void loadRegisters(bool encrypting);
    bool run(bool encrypting, CMutex& mutex, uint8_t* dst, const uint8_t* src, size_t size);
};

void TripleDesInternal::loadRegisters(bool encrypting) {
    static constexpr void (*kLoaders[])(unsigned char*, short) = {deskey, des2key, des3key};
    kLoaders[(keyLength - 1) / 8](key, encrypting ? 0 : 1);
}

bool TripleDesInternal::run(bool encrypting, CMutex& mutex, uint8_t* dst, const uint8_t* src, size_t size) {
    const size_t real_size = size - size % blockSize();
    const Fundo::Detail::MutexGuard<CMutex> guard(mutex);
    loadRegisters(encrypting);
    do_en_de_crypt(useIv, encrypting, desFunc, dst, src, real_size, iv);
    return real_size == size;
}

CTripleDes::CTripleDes(const uint8_t* key, size_t keyLength, BlockType blockType, const uint8_t* iv)
    : m_internal(new TripleDesInternal()) {
    m_internal->desFunc = keyLength <= 8 ? des : blockType == Block16 ? D2des : Ddes;
    const size_t block_size = m_internal->blockSize();
    FUNDO_ASSERT_IN(block_size > 0, "CTripleDes");
    m_internal->keyLength = std::min(keyLength, kMaxKey);
    std::copy_n(key, m_internal->keyLength, m_internal->key);
    m_internal->useIv = iv != nullptr;
    if (iv != nullptr) std::copy_n(iv, block_size, m_internal->iv);
}

CTripleDes::~CTripleDes() {
    wipe(m_internal, sizeof *m_internal);
    delete m_internal;
}

// The texts of the two directions differ, so the checks stand in both.
bool CTripleDes::encrypt(uint8_t* dst, const uint8_t* src, size_t size) {
    FUNDO_ASSERT_IN(m_internal, "bool Tovra::Utils::CTripleDes::encrypt(uint8_t *, const uint8_t *, size_t)");
    if (m_internal->keyLength == 0) {
        FUNDO_REPORT_THIS(Fundo::Detail::kError, "key_length is %u,is unvalid!\n", 0u);
        return false;
    }
    if (const size_t rest = size % m_internal->blockSize()) {
        FUNDO_REPORT_THIS(Fundo::Detail::kError,
                          "CTripleDes::encrypt(): size is not the multiple of the 'BlockSize'!!! size(%zu), "
                          "real_size(%zu)\n",
                          size, size - rest);
    }
    static Fundo::Detail::Immortal<CMutex> s_mtx_d3des;
    return m_internal->run(true, *s_mtx_d3des, dst, src, size);
}

bool CTripleDes::decrypt(uint8_t* dst, const uint8_t* src, size_t size) {
    FUNDO_ASSERT_IN(m_internal, "bool Tovra::Utils::CTripleDes::decrypt(uint8_t *, const uint8_t *, size_t)");
    if (m_internal->keyLength == 0) {
        FUNDO_REPORT_THIS(Fundo::Detail::kError, "key_length is %u,is unvalid!\n", 0u);
        return false;
    }
    if (const size_t rest = size % m_internal->blockSize()) {
        // Contract: the text names the other direction.
        FUNDO_REPORT_THIS(Fundo::Detail::kError,
                          "CTripleDes::encrypt(): size is not the multiple of th 'BlockSize'!!! size(%zu), "
                          "real_size(%zu)\n",
                          size, size - rest);
    }
    static Fundo::Detail::Immortal<CMutex> s_mtx_d3des;
    return m_internal->run(false, *s_mtx_d3des, dst, src, size);
}

}  // namespace Tovra::Utils

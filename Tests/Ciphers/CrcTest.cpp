#include "Utils/Crc.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "Samples.h"
#include "Support/GuardedBuffer.h"
#include "Utils/Crc/CrcKernels.h"

// The peer has a crc32 in the global namespace.
namespace Ours = Tovra::Utils;
namespace Crc = Ours::Crc;
namespace Cpu = Ours::Cpu;

namespace {

unsigned short plainCrc16(unsigned short crc, const uint8_t* data, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        crc = static_cast<unsigned short>(crc ^ data[i]);
        for (int bit = 0; bit < 8; ++bit)
            crc = static_cast<unsigned short>((crc >> 1) ^ ((crc & 1) != 0 ? 0xA001 : 0));
    }
    return crc;
}

// Compares all lengths to beyond the widest group with the oracles, right before an inaccessible page.
void compareAllLengths() {
    const Samples::Bytes sample = Samples::bytes(1500);
    const Tests::CGuardedBuffer buffer(sample.size());
    std::copy(sample.begin(), sample.end(), buffer.data());
    for (size_t length = 0; length <= sample.size(); ++length) {
        const uint8_t* data = buffer.data() + sample.size() - length;
        const unsigned seed = 0x9E3779B9u * static_cast<unsigned>(length);
        const auto narrow = static_cast<unsigned short>(seed);
        ASSERT_EQ(Ours::crc32(seed, data, length), ::crc32(seed, data, static_cast<uInt>(length))) << length;
        ASSERT_EQ(Ours::crc16(narrow, data, length), plainCrc16(narrow, data, length)) << length;
    }
}

template <uint32_t Polynomial>
void expectKernel(size_t length, Crc::Update kernel) {
    EXPECT_TRUE(Crc::kernelFor<Polynomial>(length) == kernel) << Polynomial << " " << length;
}

}  // namespace

TEST(Crc, CheckValuesAndSeedsHold) {
    const std::string digits = "123456789";  // the check value of the CRC catalogues
    EXPECT_EQ(Ours::crc32(Samples::text(digits), 9), 0xCBF43926u);
    EXPECT_EQ(Ours::crc16(0, Samples::text(digits), 9), 0xBB3D);
    EXPECT_EQ(Ours::crc32(Samples::text(digits), 0), 0u);
    EXPECT_EQ(Ours::crc32(5, Samples::text(digits), 0), 5u);
    EXPECT_EQ(Ours::crc32(5, nullptr, 0), 5u);
    EXPECT_EQ(Ours::crc16(0x1234, nullptr, 0), 0x1234);
}

TEST(Crc, ThePortableKernelMatchesTheOracles) {
    const Cpu::CRestriction portable(Cpu::kPortable);
    expectKernel<Crc::kIeee32>(1 << 16, Crc::updatePortable<Crc::kIeee32>);
    expectKernel<Crc::kAnsi16>(1 << 16, Crc::updatePortable<Crc::kAnsi16>);
    compareAllLengths();
}

#if FUNDO_X86_64
TEST(Crc, CarrylessMultiplicationMatchesTheOracles) {
    if (!Cpu::has(Cpu::kClmul)) GTEST_SKIP() << "no PCLMULQDQ";
    const Cpu::CRestriction narrow(Cpu::kClmul);
    expectKernel<Crc::kIeee32>(64, Crc::updateClmul<Crc::kIeee32>);
    expectKernel<Crc::kAnsi16>(1 << 16, Crc::updateClmul<Crc::kAnsi16>);
    compareAllLengths();
}

TEST(Crc, ItsVectorFormMatchesTheOracles) {
    if (!Cpu::has(Cpu::kVclmul512)) GTEST_SKIP() << "no VPCLMULQDQ";
    expectKernel<Crc::kIeee32>(256, Crc::updateVector<Crc::kIeee32>);
    expectKernel<Crc::kAnsi16>(1 << 16, Crc::updateVector<Crc::kAnsi16>);
    compareAllLengths();
}
#endif

TEST(Crc, AStreamInPiecesHasTheSumOfTheWhole) {
    const Samples::Bytes sample = Samples::bytes(20000);
    std::mt19937 random(7);
    unsigned sum = 0;
    unsigned short sum16 = 0;
    Samples::inPieces(sample.size(), random, [&](size_t start, size_t size) {
        sum = Ours::crc32(sum, sample.data() + start, size);
        sum16 = Ours::crc16(sum16, sample.data() + start, size);
    });
    EXPECT_EQ(sum, Ours::crc32(sample.data(), sample.size()));
    EXPECT_EQ(sum16, Ours::crc16(0, sample.data(), sample.size()));
}

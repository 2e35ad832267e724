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

unsigned plainCrc16(unsigned crc, const uint8_t* data, size_t length) {
    for (size_t bit = 0; bit < 8 * length; ++bit) {
        if (bit % 8 == 0) crc ^= data[bit / 8];
        crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xA001 : 0);
    }
    return crc;
}

// Compares all lengths to beyond the widest group with the oracles, right before an inaccessible page.
void compareAllLengths() {
    const Samples::Bytes sample = Samples::bytes(1500);
    const Tests::CGuardedBuffer buffer(sample.data(), sample.size());
    for (size_t length = 0; length <= sample.size(); ++length) {
        const uint8_t* data = buffer.data() + sample.size() - length;
        const unsigned seed = 0x9E3779B9u * static_cast<unsigned>(length);
        const auto narrow = static_cast<unsigned short>(seed);
        ASSERT_EQ(Ours::crc32(seed, data, length), ::crc32(seed, data, static_cast<uInt>(length))) << length;
        ASSERT_EQ(Ours::crc16(narrow, data, length), plainCrc16(narrow, data, length)) << length;
    }
}

}  // namespace

TEST(Crc, CheckValuesAndSeedsHold) {
    const uint8_t digits[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};  // of the CRC catalogues
    EXPECT_EQ(Ours::crc32(digits, 9), 0xCBF43926u);
    EXPECT_EQ(Ours::crc16(0, digits, 9), 0xBB3D);
    EXPECT_EQ(Ours::crc32(nullptr, 0), 0u);
    EXPECT_EQ(Ours::crc32(5, nullptr, 0), 5u);
    EXPECT_EQ(Ours::crc16(0x1234, nullptr, 0), 0x1234);
}

TEST(Crc, EachKernelMatchesTheOraclesAndContinuesASum) {
    // The features, the kernels, and the shortest length that takes them.
    const std::tuple<unsigned, Crc::Update, Crc::Update, size_t> paths[] = {
#if FUNDO_X86_64
        {Cpu::kVclmul512 | Cpu::kClmul, Crc::updateVector<Crc::kIeee32>, Crc::updateVector<Crc::kAnsi16>,
         256},
        {Cpu::kClmul, Crc::updateClmul<Crc::kIeee32>, Crc::updateClmul<Crc::kAnsi16>, 64},
#endif
        {Cpu::kPortable, Crc::updatePortable<Crc::kIeee32>, Crc::updatePortable<Crc::kAnsi16>, 0}
    };
    const Samples::Bytes sample = Samples::bytes(20000);
    std::mt19937 random(7);
    for (const auto& [features, wide, narrow, from] : paths) {
        if (!Cpu::has(features)) continue;
        const Cpu::CRestriction restriction(features);
        ASSERT_TRUE(Crc::kernelFor<Crc::kIeee32>(from) == wide) << from;
        ASSERT_TRUE(Crc::kernelFor<Crc::kAnsi16>(from) == narrow) << from;
        compareAllLengths();
        unsigned sum = 0;
        unsigned short sum16 = 0;
        Samples::inPieces(sample.size(), random, [&](size_t start, size_t size) {
            sum = Ours::crc32(sum, sample.data() + start, size);
            sum16 = Ours::crc16(sum16, sample.data() + start, size);
        });
        EXPECT_EQ(sum, Ours::crc32(sample.data(), sample.size()));
        EXPECT_EQ(sum16, Ours::crc16(0, sample.data(), sample.size()));
    }
}

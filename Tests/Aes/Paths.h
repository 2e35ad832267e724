#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Utils/Aes/Kernel.h"
#include "Utils/CpuFeatures.h"

namespace Tests {

namespace Cpu = Tovra::Utils::Cpu;

using Bytes = std::vector<std::uint8_t>;

// The ways through the library: the features allowed, and the kernel that long buffers must then meet.
constexpr std::pair<unsigned, const char*> kPaths[] = {{Cpu::kPortable, "portable"},
                                                       {Cpu::kAes | Cpu::kClmul, "AES-NI"},
                                                       {Cpu::kAes | Cpu::kVaes256, "VAES-256"},
                                                       {Cpu::kAes | Cpu::kVaes512, "VAES-512"}};

// Does it once by each path of this processor, having made sure that the path is taken.
template <class Do>
void onEachPath(Do&& what) {
    for (const auto& [features, kernel] : kPaths) {
        if (!Cpu::has(features)) continue;
        SCOPED_TRACE(kernel);
        const Cpu::CRestriction restriction(features);
        ASSERT_STREQ(Tovra::Utils::AES::kernelFor(100).name, kernel);
        what();
        if (::testing::Test::HasFatalFailure()) return;
    }
}

inline Bytes fromHex(const std::string& text) {
    Bytes bytes;
    for (size_t i = 0; i < text.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(text.substr(i, 2), nullptr, 16)));
    return bytes;
}

}  // namespace Tests

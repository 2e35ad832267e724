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

// A way through the library: the features allowed, and the kernel that long buffers must then meet.
struct Path {
    unsigned features;
    const char* kernel;
};

constexpr Path kPaths[] = {{Cpu::kPortable, "portable"},
                           {Cpu::kAes | Cpu::kClmul, "AES-NI"},
                           {Cpu::kAes | Cpu::kVaes256, "VAES-256"},
                           {Cpu::kAes | Cpu::kVaes512, "VAES-512"}};

// Does it once by each path of this processor, having made sure that the path is taken.
template <class Do>
void onEachPath(Do&& what) {
    for (const Path& path : kPaths) {
        if (!Cpu::has(path.features)) continue;
        SCOPED_TRACE(path.kernel);
        const Cpu::CRestriction restriction(path.features);
        ASSERT_STREQ(Tovra::Utils::AES::kernelFor(100).name, path.kernel);
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

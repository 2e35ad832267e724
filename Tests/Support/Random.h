#pragma once

#include <gtest/gtest.h>

#include <random>

namespace Support {

// Random numbers that are others in each run; a failure within its scope shows the seed.
class Random : public std::mt19937 {
public:
    explicit Random(unsigned seed = std::random_device{}())
        : std::mt19937(seed), m_trace(__FILE__, __LINE__, seed) {}

private:
    testing::ScopedTrace m_trace;
};

}  // namespace Support

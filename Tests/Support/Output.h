#pragma once

#include <gtest/gtest.h>

#include <string>

#include "MiniFundo/PrintLog.h"

namespace Support {

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Collects what reaches standard output at a log level while it lives.
class Output {
public:
    explicit Output(int level) {
        __atomic_store_n(&Fundo_printLogLevel, level, __ATOMIC_RELAXED);
        testing::internal::CaptureStdout();
    }
    ~Output() {
        if (!m_taken) testing::internal::GetCapturedStdout();
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    std::string take() {
        m_taken = true;
        return testing::internal::GetCapturedStdout();
    }

private:
    bool m_taken = false;
};

}  // namespace Support

#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Fundo/Fundo3/PrintLog.h"

namespace Support {

// Collects the lines of the print log while it lives. Any thread may log.
class LogCapture {
public:
    explicit LogCapture(int level) {
        Tovra::Fundo::setPrintLogLevel(level);
        Tovra::Fundo::attachPrint(proc());
    }
    ~LogCapture() { Tovra::Fundo::detachPrint(proc()); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }

    // How many lines hold a text.
    size_t count(const std::string& text) {
        size_t found = 0;
        for (const std::string& line : lines())
            found += line.find(text) != std::string::npos ? 1 : 0;
        return found;
    }

private:
    Tovra::Fundo::TFunction1<bool, const char*> proc() { return {&LogCapture::take, this}; }

    bool take(const char* line) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.emplace_back(line);
        return true;
    }

    std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

}  // namespace Support

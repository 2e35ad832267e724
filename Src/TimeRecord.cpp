#include "Fundo/TimeRecord.h"

#include <cstdint>
#include <string>
#include <vector>

#include "Fundo/Fundo3/Time.h"
#include "Fundo3/Report.h"

static constexpr char kSource[] = "Src/TimeRecord";

struct CTimeRecord::TimeRecordInternal {
    struct Entry {
        const char* label;
        uint64_t time;  // microseconds
    };

    std::string m_name;
    std::vector<Entry> m_entries;
};

CTimeRecord::CTimeRecord(const char* name)
    : m_internal(new TimeRecordInternal{name == nullptr ? "" : name, {}}) {}

CTimeRecord::~CTimeRecord() { delete m_internal; }

void CTimeRecord::stat(unsigned int threshold, const char* label) {
    auto& entries = m_internal->m_entries;
    entries.push_back({label, Tovra::Fundo::CTime::getCurrentMicroSecond()});
    if (threshold != 0 && entries.back().time - entries.front().time < threshold) return;
    for (size_t i = 1; i < entries.size(); ++i) {
        const char* text = entries[i].label == nullptr ? "(null)" : entries[i].label;
        FUNDO_REPORT(Tovra::Fundo::Detail::kInfo, "%s-%s : %d us\n", m_internal->m_name.c_str(), text,
                     static_cast<int>(entries[i].time - entries[i - 1].time));
    }
}

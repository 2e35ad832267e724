#pragma once

#include "Fundo/Fundo3/Export.h"

/// Takes the times of stages and logs how long each took. For one thread at a time.
class FUNDO_API CTimeRecord {
public:
    /// @param name stands in each line; copied, null counts as ""
    explicit CTimeRecord(const char* name);
    ~CTimeRecord();
    CTimeRecord(const CTimeRecord&) = delete;
    CTimeRecord& operator=(const CTimeRecord&) = delete;

    /// Adds the present time. If at least threshold microseconds have passed since the first entry, logs a
    /// line at level 4 for each entry but the first: "%s-%s : %d us\n" with the name, the entry's label
    /// and the microseconds since the entry before it. All entries are kept.
    /// @param threshold microseconds; 0 logs in any case
    /// @param label     what has ended now; not copied, it must outlive this object
    void stat(unsigned int threshold, const char* label = nullptr);

private:
    struct TimeRecordInternal;
    TimeRecordInternal* m_internal;
};

#pragma once

#include <cstdio>

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Fundo3/SystemTime.h"
#include "Fundo3/Time/Calendar.h"

// What the version records of both generations share. They differ in how they read a revision.

namespace Tovra::Fundo::Detail {

// The value of CTime::minTime as a constant, so that no initialiser runs after a setAppDate() and undoes it.
inline constexpr SystemTime kFirstAppDate{2000, 1, 1, weekday(2000, 1, 1), 0, 0, 0, -1};

inline const char* orEmpty(const char* text) { return text != nullptr ? text : ""; }

// Reads "Oct 25 2019" into year, month and day. What is missing stays as it was; the month is always set.
void readDate(const char* text, SystemTime& date);

template <class Record>
void fillRecord(Record& record, const char* name, int major, int minor, int revision, const char* date) {
    std::snprintf(record.name, sizeof record.name, "%s", orEmpty(name));
    record.major = major;
    record.minor = minor;
    record.revision = revision;
    record.svnRevision = 0;
    record.date = {};
    readDate(date, record.date);
}

template <class Record>
void printRecord(const Record& record) {
    logInfo("[*] %s %d.%d.%d.%d Built in %d/%2d/%2d [*]\n", record.name, record.major, record.minor,
            record.revision, record.svnRevision, record.date.year, record.date.month, record.date.day);
}

}  // namespace Tovra::Fundo::Detail

#pragma once

#include <string>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/SystemTime.h"

/// A version as CVersion's list holds it.
class FUNDO_API VersionMatcher {
public:
    /// @param name null counts as ""
    VersionMatcher(const char* name, int major, int minor, int revision);

    /// Whether this version comes before the other by major, minor, revision. Names that differ, their case
    /// aside, make it true both ways round: this is no order to sort by.
    bool operator<(const VersionMatcher& other) const;

    std::string name;  ///< name of the library
    int major;         ///< first version number
    int minor;         ///< second version number
    int revision;      ///< third version number
};

/// The version record of older libraries. As Tovra::Fundo::CVersion, and every record enters a list of the
/// process that an application can match against.
///
/// The list has no lock: records are static objects, and no thread may ask while a library is being loaded.
class FUNDO_API CVersion {
public:
    /// Enters the list. Logs "Some [name] files are not commit to SVN server. It compied wtih local modified
    /// files." by logInfo() if the revision text holds an "M".
    /// @param name        cut to 31 characters, in the list whole
    /// @param svnRevision a number, or any text with a number behind its first ":"; anything else counts as 0
    /// @param date        as the compiler writes dates, "Oct 25 2019"; an unknown name of a month gives month
    /// 13
    CVersion(const char* name, int major, int minor, int revision, const char* svnRevision, const char* date);

    /// Logs "[*] name major.minor.revision.svnRevision Built in year/month/day [*]" by logInfo().
    void print() const;

    /// Reads a date, as the constructor does, into year, month and day of appDate. Meant for start-up, by one
    /// thread.
    static void setAppDate(const char* date);

    /// Whether no record of that name, its case aside, is below a version. True if there is none of the name.
    static bool matchNotLessThan(const char* name, int major, int minor, int revision);

    /// Whether all records of that name, its case aside, are of a version. True if there is none of the name.
    static bool matchEqual(const char* name, int major, int minor, int revision);

    char name[32];                  ///< at most 31 characters
    int major;                      ///< first version number
    int minor;                      ///< second version number
    int revision;                   ///< third version number
    int svnRevision;                ///< the number in the revision text
    Tovra::Fundo::SystemTime date;  ///< date of the build: year, month and day, the rest 0

    static Tovra::Fundo::SystemTime appDate;  ///< date of the application; CTime::minTime until it is set
};

#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/SystemTime.h"

namespace Tovra::Fundo {

/// What a library says of itself: name, version, revision in source control and date of its build. Each
/// library defines one as a static object and prints it when it starts to work:
///
///     static CVersion s_version("Camera", 2, 1, 0, "$Rev: 4711 $", __DATE__);
///
/// A plain record, constant once built. May be built in any static initialiser.
class FUNDO_API CVersion {
public:
    /// @param name        cut to 31 characters
    /// @param svnRevision a number, or a keyword such as "$Rev: 4711 $"; anything else counts as 0
    /// @param date        as the compiler writes dates, "Oct 25 2019"; an unknown name of a month gives month
    /// 13
    CVersion(const char* name, int major, int minor, int revision, const char* svnRevision, const char* date);

    /// Logs "[*] name major.minor.revision.svnRevision Built in year/month/day [*]" by logInfo().
    void print() const;

    /// Reads a date, as the constructor does, into year, month and day of appDate. Meant for start-up, by one
    /// thread.
    static void setAppDate(const char* date);

    char name[32];    ///< at most 31 characters
    int major;        ///< first version number
    int minor;        ///< second version number
    int revision;     ///< third version number
    int svnRevision;  ///< the number in the revision text
    SystemTime date;  ///< date of the build: year, month and day, the rest 0

    static SystemTime appDate;  ///< date of the application; CTime::minTime until it is set
};

}  // namespace Tovra::Fundo

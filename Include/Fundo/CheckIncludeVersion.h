#pragma once

#include "Fundo/Fundo3/Export.h"

/// States against which revisions of which header folders a library was compiled, and finds libraries of one
/// process that saw different ones. Each library defines one static object; the application asks for the
/// result when its libraries are loaded:
///
///     static CCheckIncludeVersion::IncludeVersion s_includes[] = {
///         {"URL: https://source.example/camera/Include/Camera", "4711"},
///     };
///     static CCheckIncludeVersion s_check("Camera", s_includes, 1);
///
/// Libraries may register from any thread, also late, by dlopen(). One that has registered must not be
/// unloaded: its table is read until the process ends.
class FUNDO_API CCheckIncludeVersion {
public:
    /// A header folder as one library saw it. Neither text may be null.
    struct IncludeVersion {
        const char* url;      ///< "URL: " and the folder's address in source control
        const char* version;  ///< its revision: digits and nothing else
    };

    /// Registers a table, which must stay. The table is logged at level 4. A malformed revision, or another
    /// one than an earlier table has for the same URL text, is logged at level 2 and ends in "check include
    /// version failed, assert"; the load goes on all the same.
    /// @param count rows of the table
    CCheckIncludeVersion(const char* libName, const IncludeVersion* table, int count);

    /// Logs "CCheckIncludeVersionInter::checkResult successful" at level 4 if all tables were well-formed and
    /// agreed. Otherwise reports at level 2 what to bring up to date, and aborts by assertion. No thread may
    /// load libraries meanwhile.
    static void checkResult();

    /// Does nothing. A call makes the linker take the library's own table along.
    static void doNothing();
};

// A library that registers while it is being loaded.
#include "Fundo/CheckIncludeVersion.h"
#include "Fundo/Version.h"

static CCheckIncludeVersion::IncludeVersion s_includes[] = {
    {"URL: git://door/Include/Lock", "7"},
    {"URL: git://door/Include/Door", LATE_REVISION},
};
static const CCheckIncludeVersion s_check(LATE_NAME, s_includes, 2);
static const CVersion s_version(LATE_NAME, 1, 2, 3, LATE_REVISION, "Oct 25 2019");

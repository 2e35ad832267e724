#include "Fundo/CheckIncludeVersion.h"

#include "CheckIncludeVersionInter.h"
#include "Fundo3/Build.h"
#include "Fundo3/Report.h"

static constexpr char kSource[] = "Src/CheckIncludeVersion";

// The library's own table: the folders of its public headers, all of the revision that it was built from.
#define FUNDO_INCLUDE_VERSION(folder) \
    { "URL: " FUNDO_SOURCE_ADDRESS "/Include/" folder, FUNDO_REVISION_TEXT }

static const CCheckIncludeVersion::IncludeVersion includeVersion[] = {
    FUNDO_INCLUDE_VERSION("Component"), FUNDO_INCLUDE_VERSION("Fundo"), FUNDO_INCLUDE_VERSION("Memory"),
    FUNDO_INCLUDE_VERSION("MiniFundo"), FUNDO_INCLUDE_VERSION("Utils"),
};

static const CCheckIncludeVersion g_Fundo_check("Fundo", includeVersion,
                                                sizeof includeVersion / sizeof includeVersion[0]);

CCheckIncludeVersion::CCheckIncludeVersion(const char* libName, const IncludeVersion* table, int count) {
    if (CCheckIncludeVersionInter::instance()->match(libName, table, count)) return;
    // Contract: nothing stops here, whatever the text says; checkResult() does.
    FUNDO_REPORT_PLAIN_THIS(Tovra::Fundo::Detail::kError, "check include version failed, assert\n");
}

void CCheckIncludeVersion::checkResult() { CCheckIncludeVersionInter::instance()->checkResult(); }

void CCheckIncludeVersion::doNothing() {}

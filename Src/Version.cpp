#include "Fundo/Version.h"

#include <cstring>
#include <tuple>
#include <vector>

#include "Fundo/CheckIncludeVersion.h"
#include "Fundo/PrintLog.h"
#include "Fundo3/Build.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Version/VersionText.h"
#include "Utils/String.h"

using namespace Tovra::Fundo::Detail;

Tovra::Fundo::SystemTime CVersion::appDate = kFirstAppDate;

// The library's own record of the old generation.
static const CVersion g_fundoVersion("Fundo2", 2, 0, 0, kRevisionText, FUNDO_BUILD_DATE);

namespace {

// Made by the first record of any library, whichever initialiser comes first.
std::vector<VersionMatcher>& getVersionInfo() {
    static Immortal<std::vector<VersionMatcher>> s_versions;
    return *s_versions;
}

bool sameName(const VersionMatcher& a, const VersionMatcher& b) {
    return Tovra::Utils::stricmp(a.name.c_str(), b.name.c_str()) == 0;
}

auto numbersOf(const VersionMatcher& version) {
    return std::tie(version.major, version.minor, version.revision);
}

// Whether a condition holds for every record of the name asked for.
template <class Condition>
bool allOfName(const VersionMatcher& asked, Condition holds) {
    for (const VersionMatcher& version : getVersionInfo()) {
        if (sameName(version, asked) && !holds(version)) return false;
    }
    return true;
}

int revisionOf(const char* text) {
    const char* colon = std::strchr(text, ':');
    int revision = 0;
    std::sscanf(colon != nullptr ? colon + 1 : text, "%d", &revision);
    return revision;
}

}  // namespace

VersionMatcher::VersionMatcher(const char* name_, int major_, int minor_, int revision_)
    : name(orEmpty(name_)), major(major_), minor(minor_), revision(revision_) {}

bool VersionMatcher::operator<(const VersionMatcher& other) const {
    // Contract: versions of different libraries are below each other, both ways.
    return !sameName(*this, other) || numbersOf(*this) < numbersOf(other);
}

CVersion::CVersion(const char* name_, int major_, int minor_, int revision_, const char* svnRevision_,
                   const char* date_) {
    CCheckIncludeVersion::doNothing();
    getVersionInfo().emplace_back(name_, major_, minor_, revision_);
    fillRecord(*this, name_, major_, minor_, revision_, date_);
    svnRevision = revisionOf(orEmpty(svnRevision_));
    if (std::strchr(orEmpty(svnRevision_), 'M') != nullptr) {
        logInfo("Some [%s] files are not commit to SVN server. It compied wtih local modified files.\n",
                orEmpty(name_));
    }
}

void CVersion::print() const { printRecord(*this); }

void CVersion::setAppDate(const char* date) { readDate(date, appDate); }

bool CVersion::matchNotLessThan(const char* name, int major, int minor, int revision) {
    const VersionMatcher asked(name, major, minor, revision);
    return allOfName(asked, [&](const VersionMatcher& version) { return !(version < asked); });
}

bool CVersion::matchEqual(const char* name, int major, int minor, int revision) {
    const VersionMatcher asked(name, major, minor, revision);
    return allOfName(asked,
                     [&](const VersionMatcher& version) { return numbersOf(version) == numbersOf(asked); });
}

#include "Fundo/Fundo3/Version.h"

#include <cstdlib>

#include "Fundo3/Version/VersionText.h"

namespace Tovra::Fundo {

SystemTime CVersion::appDate = Detail::kFirstAppDate;

namespace {

// A plain number, or a keyword of source control: "$Rev: 4711 $".
int revisionOf(const char* text) {
    if (*text >= '0' && *text <= '9') return std::atoi(text);
    int revision = 0;
    std::sscanf(text, "%*[$a-zA-Z:]%d", &revision);
    return revision;
}

}  // namespace

CVersion::CVersion(const char* name_, int major_, int minor_, int revision_, const char* svnRevision_,
                   const char* date_) {
    Detail::fillRecord(*this, name_, major_, minor_, revision_, date_);
    svnRevision = revisionOf(Detail::orEmpty(svnRevision_));
}

void CVersion::print() const { Detail::printRecord(*this); }

void CVersion::setAppDate(const char* date) { Detail::readDate(date, appDate); }

}  // namespace Tovra::Fundo

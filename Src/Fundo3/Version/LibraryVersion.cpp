#include "Fundo3/Version/LibraryVersion.h"

#include "Fundo3/Build.h"

namespace Tovra::Fundo::Detail {

const CVersion& libraryVersion() {
    static const CVersion s_fundo_ver("Fundo", 3, 0, 0, kRevisionText, FUNDO_BUILD_DATE);
    return s_fundo_ver;
}

}  // namespace Tovra::Fundo::Detail

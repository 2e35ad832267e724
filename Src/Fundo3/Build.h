#pragma once

#include "FundoBuild.h"

namespace Tovra::Fundo::Detail {

// The version text in the library's own log lines.
inline constexpr char kRevisionText[] = FUNDO_REVISION_TEXT;

}  // namespace Tovra::Fundo::Detail

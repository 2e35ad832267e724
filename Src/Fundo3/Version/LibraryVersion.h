#pragma once

#include "Fundo/Fundo3/Version.h"

namespace Tovra::Fundo::Detail {

// The library's own record, made on first use: a static object of an application may start the first thread
// before this library's initialisers have run.
const CVersion& libraryVersion();

}  // namespace Tovra::Fundo::Detail

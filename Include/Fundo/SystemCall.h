#pragma once

#include "Fundo/Fundo3/Export.h"

/// Tovra::Fundo::systemCall(): the library itself runs no command.
/// @return 1 for a null command; otherwise -1, with the command logged at level 6 and a warning, unless
///         Tovra::Fundo::setSystemCallHandler() has installed what answers
FUNDO_API int systemCall(const char* command);

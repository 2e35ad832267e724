#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"

namespace Tovra::Fundo {

/// Asks for a command of the system. The library runs nothing by itself: the command is logged at level 6
/// and, unless a handler is installed, refused with a warning.
/// @return 1 for a null command; what the handler answers, 0 meaning success; -1 without a handler
FUNDO_API int systemCall(const char* command);

/// Installs what runs commands, such as one that has the hardware clock written; an empty delegate takes it
/// away. Meant for start-up.
FUNDO_API void setSystemCallHandler(TFunction1<int, const char*> handler);

}  // namespace Tovra::Fundo

#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo::Detail {

/// Stops the process by the C library's own assertion failure. Standard output is flushed before, if no other
/// thread holds it. Active in every build.
[[noreturn]] FUNDO_API void platformAssertFailed(const char* expression, const char* file, unsigned line,
                                                 const char* function);

}  // namespace Tovra::Fundo::Detail

/// The C library's assertion with a file text of its own. It does not depend on the including file's NDEBUG.
#define FUNDO_PLATFORM_ASSERT(expression, file) \
    (static_cast<bool>(expression)              \
         ? static_cast<void>(0)                 \
         : ::Tovra::Fundo::Detail::platformAssertFailed(#expression, file, __LINE__, __PRETTY_FUNCTION__))

// Clears memory that held a secret, in a way that no compiler takes out.
#pragma once

#include <string.h>

#include <cstddef>

namespace Tovra::Utils {

inline void wipe(void* p, size_t n) { explicit_bzero(p, n); }

}  // namespace Tovra::Utils

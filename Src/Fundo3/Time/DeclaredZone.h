#pragma once

#include <cstdint>

#include "Fundo/Fundo3/Utc.h"

// What the application declared about its zone; any thread reads and writes the two integers.

namespace Tovra::Fundo::Detail {

inline constexpr int32_t kZoneNotSet = 0xFFFFFFF;

inline int32_t declaredZone() { return __atomic_load_n(&s_TimeZoneDiffSec, __ATOMIC_RELAXED); }
inline int32_t declaredDst() { return __atomic_load_n(&s_isdst, __ATOMIC_RELAXED); }

}  // namespace Tovra::Fundo::Detail

#pragma once

#include "Fundo/Fundo3/Export.h"

/// The binary logarithm of the lower 32 bits of x, rounded down; 0 for 0.
FUNDO_API int log2i(unsigned long x);

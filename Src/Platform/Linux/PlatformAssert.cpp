#include "Fundo/Fundo3/Detail/PlatformAssert.h"

// The failure routine is declared only where assertions are on.
#undef NDEBUG
#include <cassert>

#include "Fundo3/StandardOutput.h"

void Tovra::Fundo::Detail::platformAssertFailed(const char* expression, const char* file, unsigned line,
                                                const char* function) {
    flushStandardOutput();
    __assert_fail(expression, file, line, function);
}

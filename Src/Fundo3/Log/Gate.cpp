// The three integers that decide about a line before anything else is done. They are plain exported
// integers, so that macros in users' code can test them; here they are read and written as relaxed atomics.

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo3/Report.h"

int Fundo_printLogLevel = Tovra::Fundo::Detail::kWarn;
int Fundo_openLog = 2;
int Fundo_returned = 1;

namespace Tovra::Fundo {

void setPrintLogLevel(int level) { __atomic_store_n(&Fundo_printLogLevel, level, __ATOMIC_RELAXED); }

int getPrintLogLevel() { return __atomic_load_n(&Fundo_printLogLevel, __ATOMIC_RELAXED); }

}  // namespace Tovra::Fundo

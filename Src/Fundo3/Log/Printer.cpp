#include "Fundo3/Log/Printer.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Log/LogFile.h"
#include "Fundo3/MutexGuard.h"

// The replaceable printer and the attached procedures. Both are copied under the lock and called without it,
// so they may attach, detach, set a printer and log themselves. A process without them pays two loads a line.

namespace Tovra::Fundo {

namespace {

using Printer = TFunction1<void, const char*>;
using Proc = TFunction1<bool, const char*>;

struct Receivers {
    CMutex s_fundoProcPrintMutex;
    Printer s_print;
    std::vector<Proc> s_PrintProcList;  // in attach order
};

std::atomic<bool> s_hasPrinter{false};
std::atomic<bool> s_hasProcs{false};

Receivers& receivers() {
    static Detail::Immortal<Receivers> s_receivers;
    return *s_receivers;
}

using Locked = Detail::MutexGuard<CMutex>;

Printer currentPrinter() {
    if (!s_hasPrinter.load(std::memory_order_relaxed)) return {};
    Receivers& known = receivers();
    const Locked locked(known.s_fundoProcPrintMutex);
    return known.s_print;
}

std::vector<Proc> currentProcs() {
    if (!s_hasProcs.load(std::memory_order_relaxed)) return {};
    Receivers& known = receivers();
    const Locked locked(known.s_fundoProcPrintMutex);
    return known.s_PrintProcList;
}

}  // namespace

void Detail::print(int level, const char* text) {
    const Printer printer = currentPrinter();
    if (printer.empty()) {
        Fundo_print(level, text);
    } else {
        printer(text);
    }
    for (const Proc& proc : currentProcs())
        proc(text);
}

void setLogPrinter(TFunction1<void, const char*> printer) {
    Receivers& known = receivers();
    const Locked locked(known.s_fundoProcPrintMutex);
    known.s_print = printer;
    s_hasPrinter.store(!printer.empty(), std::memory_order_relaxed);
}

int attachPrint(TFunction1<bool, const char*> proc) {
    {
        Receivers& known = receivers();
        const Locked locked(known.s_fundoProcPrintMutex);
        auto& procs = known.s_PrintProcList;
        if (std::find(procs.begin(), procs.end(), proc) != procs.end()) return 0;
        procs.push_back(proc);
        s_hasProcs.store(true, std::memory_order_relaxed);
    }
    // Contract: on return any write to the log file that was under way has finished. detachPrint() does not wait.
    Detail::waitForLogFile();
    return 1;
}

int detachPrint(TFunction1<bool, const char*> proc) {
    Receivers& known = receivers();
    const Locked locked(known.s_fundoProcPrintMutex);
    auto& procs = known.s_PrintProcList;
    const auto found = std::find(procs.begin(), procs.end(), proc);
    if (found == procs.end()) return 0;
    procs.erase(found);
    s_hasProcs.store(!procs.empty(), std::memory_order_relaxed);
    return 1;
}

}  // namespace Tovra::Fundo

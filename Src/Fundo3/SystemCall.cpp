#include "Fundo/Fundo3/SystemCall.h"

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/SystemCall";

namespace {

using Handler = TFunction1<int, const char*>;

struct Installed {
    CMutex mutex;
    Handler handler;
};

Installed& installed() {
    static Detail::Immortal<Installed> s_installed;
    return *s_installed;
}

// A copy: the handler is called without the lock.
Handler currentHandler() {
    Installed& state = installed();
    const Detail::MutexGuard<CMutex> guard(state.mutex);
    return state.handler;
}

}  // namespace

void setSystemCallHandler(TFunction1<int, const char*> handler) {
    Installed& state = installed();
    const Detail::MutexGuard<CMutex> guard(state.mutex);
    state.handler = handler;
}

int systemCall(const char* command) {
    if (command == nullptr) return 1;
    FUNDO_REPORT(Detail::kDebug, "systemcall command:%s\n", command);
    const Handler handler = currentHandler();
    if (!handler.empty()) return handler(command);
    FUNDO_REPORT(Detail::kWarn, "This platform do not support system call 'system', line :  %d\n", __LINE__);
    return -1;
}

}  // namespace Tovra::Fundo

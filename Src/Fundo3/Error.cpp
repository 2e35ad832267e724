#include "Fundo/Fundo3/Error.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/ThreadSpecific.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Instance.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"
#include "Fundo3/StandardOutput.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Error";

namespace {

[[noreturn]] void custom_abort() {
    Detail::flushStandardOutput();
    std::abort();
}

// Usable before this source's own initialisers run and after the destructors of others.
CThreadSpecific& lastErrorSlot() {
    static Detail::Immortal<CThreadSpecific> s_tss_last_err;
    return *s_tss_last_err;
}

// Takes the slot's key at load, when there are keys left.
[[maybe_unused]] const CThreadSpecific& s_atLoad = lastErrorSlot();

class CErrorMessageManager {
public:
    static CErrorMessageManager* instance();

    void setMessage(int error, const char* message) {
        const Detail::MutexGuard<CMutex> guard(m_mutex);
        m_messages[error] = message != nullptr ? message : "";
    }

    const char* getMessage(int error) {
        const Detail::MutexGuard<CMutex> guard(m_mutex);
        return find(error);
    }

    // Copies under the lock: the text of getMessage() may be replaced while a caller reads it.
    std::string copyMessage(int error) {
        const Detail::MutexGuard<CMutex> guard(m_mutex);
        return find(error);
    }

private:
    const char* find(int error) const {
        const auto found = m_messages.find(error);
        return found != m_messages.end() ? found->second.c_str() : "";
    }

    CMutex m_mutex;
    std::map<int, std::string> m_messages;
};

FUNDO_DEFINE_INSTANCE(CErrorMessageManager)

}  // namespace

namespace Detail {

void assertionFailed(const char* expression, const char* function, const char* file, long line) {
    std::fprintf(stderr, "***** Internal Program Error - assertion (%s) failed in %s: %s(%ld)\n", expression,
                 function, file, line);
    custom_abort();
}

void assertionFailedMsg(const char* expression, const char* message, const char* function, const char* file,
                        long line) {
    std::fprintf(stderr, "***** Internal Program Error - assertion (%s) failed in %s: %s(%ld): %s\n",
                 expression, function, file, line, message);
    custom_abort();
}

}  // namespace Detail

void setLastError(int error) {
    lastErrorSlot().setValue(reinterpret_cast<const void*>(static_cast<intptr_t>(error)));
}

int getLastError() {
    void* value = nullptr;
    lastErrorSlot().getValue(&value);
    return static_cast<int>(reinterpret_cast<intptr_t>(value));
}

bool setErrMsg(int error, const char* message) {
    CErrorMessageManager::instance()->setMessage(error, message);
    return true;
}

const char* getErrMsg(int error) { return CErrorMessageManager::instance()->getMessage(error); }

bool setErrorMessage(int error, const std::string& message) { return setErrMsg(error, message.c_str()); }

std::string getErrorMessage(int error) { return CErrorMessageManager::instance()->copyMessage(error); }

}  // namespace Tovra::Fundo

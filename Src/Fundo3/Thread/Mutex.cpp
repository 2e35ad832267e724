#include "Fundo/Fundo3/Mutex.h"

#include <pthread.h>

#include <cerrno>

#include "Fundo3/Report.h"

namespace Tovra::Fundo {

static constexpr char kSource[] = "Src/Fundo3/Mutex";

namespace {

pthread_mutex_t* platform(void* mutex) { return static_cast<pthread_mutex_t*>(mutex); }

}  // namespace

CMutex::CMutex() : m_mutex(new pthread_mutex_t) {
    const int ret = pthread_mutex_init(platform(m_mutex), nullptr);
    FUNDO_ASSERT_IN(ret == 0, "Tovra::Fundo::CMutex::CMutex()");
}

CMutex::~CMutex() {
    const int ret = pthread_mutex_destroy(platform(m_mutex));
    if (ret == EBUSY) {
        FUNDO_REPORT_THIS(Detail::kError, "CMutex::~CMutex() errno:EBUSY.\n");
    } else if (ret == EINVAL) {
        FUNDO_REPORT_THIS(Detail::kError, "CMutex::~CMutex() errno:EINVAL.\n");
    } else if (ret != 0) {
        FUNDO_REPORT_THIS(Detail::kError, "CMutex::~CMutex() errno:%d.\n", ret);
    }
    FUNDO_ASSERT_IN(ret == 0, "Tovra::Fundo::CMutex::~CMutex()");
    delete platform(m_mutex);
    m_mutex = nullptr;
}

bool CMutex::enter() { return pthread_mutex_lock(platform(m_mutex)) == 0; }

bool CMutex::tryEnter() { return pthread_mutex_trylock(platform(m_mutex)) == 0; }

bool CMutex::leave() { return pthread_mutex_unlock(platform(m_mutex)) == 0; }

}  // namespace Tovra::Fundo

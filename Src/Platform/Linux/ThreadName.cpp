#include "Platform/ThreadName.h"

#include <pthread.h>

#include <cstdio>

namespace Tovra::Fundo::Platform {

void setCurrentThreadName(const char* name) {
    char kept[16];
    std::snprintf(kept, sizeof kept, "%s", name);
    ::pthread_setname_np(::pthread_self(), kept);
}

}  // namespace Tovra::Fundo::Platform

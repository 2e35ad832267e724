#include "Fundo/Fundo3/ThreadSpecific.h"

#include <pthread.h>

// A slot is read for every reuse delegate and last error, so validity costs no load of its own: the key is
// kept one higher, and 0 means that there is none.

namespace Tovra::Fundo {

namespace {

uintptr_t makeKey() {
    pthread_key_t key;
    // No destructor function: values are numbers, or pointers owned elsewhere.
    return pthread_key_create(&key, nullptr) == 0 ? uintptr_t{key} + 1 : 0;
}

}  // namespace

CThreadSpecific::CThreadSpecific() : m_key(makeKey()) {}

CThreadSpecific::~CThreadSpecific() {
    if (valid()) pthread_key_delete(platformKey());
}

}  // namespace Tovra::Fundo

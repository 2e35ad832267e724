#include "Fundo/Fundo3/ThreadSpecific.h"

#include <pthread.h>

// Slots are read for every last error and reuse delegate. So the two operations stand in the header and cost
// little more than the platform's call.

namespace Tovra::Fundo {

namespace Detail {

void* (*const readThreadSlot)(unsigned int key) = pthread_getspecific;
int (*const writeThreadSlot)(unsigned int key, const void* value) = pthread_setspecific;

}  // namespace Detail

namespace {

unsigned int makeSlot() {
    pthread_key_t key;
    // No destructor function: values are numbers, or pointers owned elsewhere.
    return pthread_key_create(&key, nullptr) == 0 ? key + 1 : 0;
}

}  // namespace

CThreadSpecific::CThreadSpecific() : m_slot(makeSlot()) {}

CThreadSpecific::~CThreadSpecific() {
    if (valid()) pthread_key_delete(m_slot - 1);
}

}  // namespace Tovra::Fundo

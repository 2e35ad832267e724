#pragma once

#include <cstdint>

namespace Tovra::Fundo::Platform {

// The signal that the library takes for itself, to hold threads back.
extern const int kThreadSignal;

// For the handler of that signal, which runs with it blocked: sleeps until so long after the last one has
// come. One that comes meanwhile is taken here and moves the end, so any number needs no more stack. It takes
// no lock, and no cancelled thread ends in it. errno is lost.
void sleepInHandler(uint64_t nanoSecond);

}  // namespace Tovra::Fundo::Platform

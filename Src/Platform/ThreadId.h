#pragma once

namespace Tovra::Fundo::Platform {

// The number by which the system knows the calling thread: unique while the thread lives, never -1. Cheap,
// and right in a forked child too.
int currentThreadId();

}  // namespace Tovra::Fundo::Platform

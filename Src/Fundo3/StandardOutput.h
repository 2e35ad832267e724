#pragma once

#include <cstdio>

namespace Tovra::Fundo::Detail {

// abort() does not flush: without this the line logged just before an assertion never reaches a pipe or file.
// The lock is only tried, since its holder may be the reason why the process stops.
inline void flushStandardOutput() {
    if (ftrylockfile(stdout) != 0) return;
    fflush_unlocked(stdout);
    funlockfile(stdout);
}

}  // namespace Tovra::Fundo::Detail

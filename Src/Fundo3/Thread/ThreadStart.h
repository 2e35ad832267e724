#pragma once

#include "Fundo3/Thread/ThreadInternal.h"

namespace Tovra::Fundo::Detail {

// Why a thread did not start, as a line for the log.
struct StartError {
    // @return false, for the caller to pass on
    bool set(const char* format, ...) __attribute__((format(printf, 2, 3)));

    char text[128] = "";
};

// Makes the operating-system thread of a record, whose mutex the caller holds.
// @param locked cleared if the mutex had to be left on the way
// @return false if there is no thread, or one that could not be set up to its end
bool startThread(ThreadInternal& record, bool& locked, StartError& error);

}  // namespace Tovra::Fundo::Detail

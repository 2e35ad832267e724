#pragma once

#include <thread>

namespace Support {

// Waits until a condition holds. There is no limit: the test's own time limit says that it never did.
template <typename Condition>
void await(Condition condition) {
    while (!condition())
        std::this_thread::yield();
}

}  // namespace Support

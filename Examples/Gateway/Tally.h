#pragma once

#include <cstddef>
#include <cstdint>

#include "Component/Unknown.h"
#include "Fundo/Fundo3/Export.h"

// What a channel has received so far.
struct TallyResult {
    uint64_t frames = 0;
    uint64_t bytes = 0;
    uint64_t lost = 0;  // numbers missing in the sequence, which starts at 1
    size_t smallest = 0;
    size_t largest = 0;
};

// Statistics of one channel. The gateway finds it by its class name "Tally" in ./libTally.so. Any thread.
class FUNDO_API ITally : public Tovra::Component::IUnknown {
public:
    virtual void add(uint32_t sequence, size_t size) = 0;
    virtual TallyResult result() = 0;
};

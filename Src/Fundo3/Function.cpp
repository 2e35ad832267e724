#include "Fundo/Fundo3/Function.h"

#include "Fundo/Fundo3/ThreadSpecific.h"
#include "Fundo3/Immortal.h"

namespace Tovra::Fundo {

namespace {

CThreadSpecific& reuseSlot() {
    static Detail::Immortal<CThreadSpecific> s_functionReuse;
    return *s_functionReuse;
}

// Takes the slot's key at load, when there are keys left.
[[maybe_unused]] const CThreadSpecific& s_atLoad = reuseSlot();

}  // namespace

namespace Detail {

void setCurrentFunctionReuse(unsigned int marker) {
    reuseSlot().setValue(reinterpret_cast<const void*>(static_cast<uintptr_t>(marker)));
}

}  // namespace Detail

unsigned int getCurrentFunctionReuse() {
    void* value = nullptr;
    reuseSlot().getValue(&value);
    return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(value));
}

}  // namespace Tovra::Fundo

// Chooses the kernel by what the processor has at the time of the call.
#include "Utils/Aes/Kernel.h"

namespace Tovra::Utils::AES {

const Kernel& kernelFor(std::size_t) {
#if FUNDO_X86_64
    if (Cpu::has(Cpu::kAes)) return kAesNiKernel;
#endif
    return kPortableKernel;
}

}  // namespace Tovra::Utils::AES

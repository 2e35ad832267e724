// Chooses the kernel by what the processor has at the time of the call.
#include "Utils/Aes/Kernel.h"

namespace Tovra::Utils::AES {

const Kernel& kernelFor(std::size_t blocks) {
#if FUNDO_X86_64
    if (blocks >= 4 && Cpu::has(Cpu::kVaes512 | Cpu::kAes)) return kVaes512Kernel;
    if (blocks >= 4 && Cpu::has(Cpu::kVaes256 | Cpu::kAes)) return kVaes256Kernel;
    if (Cpu::has(Cpu::kAes)) return kAesNiKernel;
#else
    static_cast<void>(blocks);
#endif
    return kPortableKernel;
}

}  // namespace Tovra::Utils::AES

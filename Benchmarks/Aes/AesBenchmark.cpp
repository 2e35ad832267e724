// AES with all that the processor has, and with the AES instructions alone.
#include "AesCases.h"

namespace {

const bool s_added = [] {
    using namespace AesCases;
    if (Cpu::has(Cpu::kAes)) addSubject("Aes", Cpu::kAes);
    if (Cpu::has(Cpu::kVaes256)) addSubject("AesVector256", Cpu::kAes | Cpu::kVaes256);
    if (Cpu::has(Cpu::kVaes512)) addSubject("AesVector512", Cpu::kAll);
    return true;
}();

}  // namespace

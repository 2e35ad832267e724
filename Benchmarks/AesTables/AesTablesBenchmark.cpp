// AES without its instructions, ours and OpenSSL's.
#include <unistd.h>

#include <cstdlib>

#include "Aes/AesCases.h"

namespace {

// OpenSSL reads its mask when it is loaded: the program starts itself again with it. The mask hides the AES
// and PCLMULQDQ instructions; one that is set already stands.
__attribute__((constructor)) void mask(int, char** argv, char**) {
    if (std::getenv("OPENSSL_ia32cap") != nullptr) return;
    ::setenv("OPENSSL_ia32cap", "~0x200000200000000", 1);
    ::execv("/proc/self/exe", argv);
}

const bool s_added = [] {
    AesCases::addSubject("AesTables", AesCases::Cpu::kPortable);
    return true;
}();

}  // namespace

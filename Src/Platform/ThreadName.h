#pragma once

namespace Tovra::Fundo::Platform {

// Gives the calling thread the name that the system's tools show, cut to what the kernel keeps.
void setCurrentThreadName(const char* name);

}  // namespace Tovra::Fundo::Platform

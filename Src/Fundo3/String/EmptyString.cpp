#include "Fundo/Fundo3/String.h"

namespace Tovra::Fundo {

// Set up by the loader, before any initialiser can ask for it.
template <>
SimpleStringStorage<char, std::allocator<char>>::Data
    SimpleStringStorage<char, std::allocator<char>>::emptyString_ = {
        emptyString_.buffer_, emptyString_.buffer_, {0}};

}  // namespace Tovra::Fundo

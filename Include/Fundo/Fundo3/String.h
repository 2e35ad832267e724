#pragma once

#include <memory>
#include <string>

#include "Fundo/Fundo3/Detail/allocatorstringstorage.h"
#include "Fundo/Fundo3/Detail/flex_string_shell.h"
#include "Fundo/Fundo3/Detail/ministringstorage.h"
#include "Fundo/Fundo3/Detail/smallstringopt.h"

namespace Tovra::Fundo {

/// The library's own string: 32 bytes, up to 31 characters in the object itself, longer ones on the heap with
/// exactly the capacity asked for. It stands in interfaces that must not depend on the standard library's
/// string.
using CString = flex_string<char, std::char_traits<char>, std::allocator<char>,
                            SmallStringOpt<AllocatorStringStorage<char, std::allocator<char>>, 31U, char*>>;

static_assert(sizeof(CString) == 32, "a string is 32 bytes");
static_assert(alignof(CString) == alignof(char*), "a string is aligned as a pointer");

}  // namespace Tovra::Fundo

#pragma once

namespace Tovra::Fundo::Detail {

// Delivers a line: to the printer or the console, then to the attached procedures. No lock is held while one
// of them runs; an exception of theirs leaves from here.
void print(int level, const char* text);

}  // namespace Tovra::Fundo::Detail

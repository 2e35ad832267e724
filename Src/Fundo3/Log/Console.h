#pragma once

namespace Tovra::Fundo::Detail {

// Opens the colour of a line of this level on standard output, unless colours are off.
void openLineColor(int level);

}  // namespace Tovra::Fundo::Detail

#pragma once

namespace Tovra::Fundo::Detail {

// The clock has been set: the next CTime::getCurTimeForPrint() reads it anew.
void refreshPrintTime();

}  // namespace Tovra::Fundo::Detail

#pragma once

// Which libraries the filtered entries let through.

namespace Tovra::Fundo::Detail {

// The answer of the module switch and table for a library; null passes. Costs one load while everything is
// on.
bool isModuleOpen(const char* libName);

// Turns a library on or off, and the table with it.
void setModule(const char* libName, bool on);

// Counts the bytes of a line under its library, if counting is on.
void countLogged(const char* libName, int size);
void setCounting(bool on);

}  // namespace Tovra::Fundo::Detail

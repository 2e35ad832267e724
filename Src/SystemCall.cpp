#include "Fundo/SystemCall.h"

#include "Fundo/Fundo3/SystemCall.h"

int systemCall(const char* command) { return Tovra::Fundo::systemCall(command); }

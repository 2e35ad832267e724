// A program as a user writes it: it must build against the installed library alone.
#include <cstdio>
#include <cstring>

#include "Fundo/Fundo3/PrintLog.h"

static bool s_seen = false;

static bool see(const char* line) {
    s_seen = std::strstr(line, "installed 42") != nullptr;
    return true;
}

int main() {
    Tovra::Fundo::attachPrint(Tovra::Fundo::TFunction1<bool, const char*>(see));
    FUNDO_LOG_WARN("consumer", "installed %d\n", 42);
    return s_seen ? 0 : 1;
}

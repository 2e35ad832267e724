#pragma once

#include <map>
#include <string>

#include "Component/ComponentFactory.h"
#include "Fundo/Fundo3/RecursiveMutex.h"

namespace Tovra::Component {

// The factories of the process, by interface id and class id. A null factory is the tombstone of one that was
// unregistered. Usable from the initialisers of other sources and to the very end.
struct FactoryTable {
    Fundo::CRecursiveMutex s_mutex;
    std::map<std::string, std::map<std::string, IFactoryUnknown*>> s_interfaces;

    static FactoryTable& instance();
};

}  // namespace Tovra::Component

#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/String.h"

namespace Tovra::Component {

/// Which class id serves an interface when the caller has no preference. Any thread.
class FUNDO_API CLocalComSelectManager {
public:
    /// Sets the class id of an interface; the first setting stands for the life of the process.
    /// @param clsid must not be null
    /// @return false for a null interface or one that is set already
    static bool setDefaultComponent(const char* iid, const char* clsid);

    /// The class id of an interface; "Local" if none was set, empty for a null interface.
    static Fundo::CString getDefaultClassID(const char* iid);
};

}  // namespace Tovra::Component

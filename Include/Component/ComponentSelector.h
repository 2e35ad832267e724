#pragma once

#include <cstdint>

#include "Component/ComPtr.h"
#include "Component/ServerInfoQueryer.h"
#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/String.h"

namespace Tovra::Component {

/// Names a channel.
struct FUNDO_API ComSelChannelInfo {
    int64_t channel;   ///< -1 is this process
    int64_t reserved;  ///< 0

    /// The channel of this process, -1.
    static const ComSelChannelInfo local;
};

/// See CServerInfoQueryerHelper::setQueryerHandler().
FUNDO_API bool setQueryerHandler(TComPtr<IServerInfoQueryer> handler);

/// A class id of its two parts: "base.detail", or base alone if detail is empty.
FUNDO_API Fundo::CString getClassId(Fundo::CString& base, Fundo::CString& detail);

}  // namespace Tovra::Component

#include "Component/ComponentSelector.h"

namespace Tovra::Component {

const ComSelChannelInfo ComSelChannelInfo::local = {-1, 0};

bool setQueryerHandler(TComPtr<IServerInfoQueryer> handler) {
    return CServerInfoQueryerHelper::instance()->setQueryerHandler(handler);
}

Fundo::CString getClassId(Fundo::CString& base, Fundo::CString& detail) {
    if (detail.size() == 0) return base;
    Fundo::CString id = base + ".";
    id.append(detail.c_str(), detail.size());
    return id;
}

}  // namespace Tovra::Component

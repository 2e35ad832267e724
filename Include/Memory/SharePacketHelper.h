#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Memory/Packet.h"

namespace Tovra::Memory {

struct BaseArg;

/// The seam for packets in memory that processes share. This library has none, so both directions give the
/// packet itself. Any thread may call any operation.
class FUNDO_API CSharePacketHelper {
public:
    /// The one helper.
    static CSharePacketHelper* instance();

    /// What another process would be sent: a handle that shares the packet.
    CPacket toDescribePacket(const CPacket& packet);
    /// The packet behind what another process sent: a handle that shares it.
    CPacket toOriginalPacket(const CPacket& packet);
    /// Does nothing. @return 0
    int initSharePacket(BaseArg* arg);
};

}  // namespace Tovra::Memory

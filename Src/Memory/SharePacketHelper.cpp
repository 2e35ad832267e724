#include "Memory/SharePacketHelper.h"

namespace Tovra::Memory {

CSharePacketHelper* CSharePacketHelper::instance() {
    static CSharePacketHelper s_helper;
    return &s_helper;
}

CPacket CSharePacketHelper::toDescribePacket(const CPacket& packet) { return packet; }

CPacket CSharePacketHelper::toOriginalPacket(const CPacket& packet) { return packet; }

int CSharePacketHelper::initSharePacket(BaseArg*) { return 0; }

}  // namespace Tovra::Memory

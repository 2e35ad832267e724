#pragma once

#include <atomic>

// Bytes of the header of each packet that a global CPacket makes; IPacketManager::config() sets it.
inline std::atomic<int> s_headerSize{128};

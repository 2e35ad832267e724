#pragma once

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"

namespace Tovra::Fundo::Detail {
template <class T, bool lasting>
class Instance;
}

/// The packet pool as old code sees it. Any thread may call any operation.
class FUNDO_API IPacketManager {
public:
    virtual ~IPacketManager();
    /// Bytes of the pool; 0 without one.
    virtual unsigned long GetBufferSize() = 0;
    /// Bytes in the pool's free blocks.
    virtual unsigned long GetFreeSize() = 0;
    /// See Tovra::Memory::CPacketManager::dumpNodes(): with the policy that config() sets, one line.
    virtual void DumpNodes() = 0;

    /// The one manager; its use freezes the configuration.
    static IPacketManager* instance();
    /// Puts the data of packets into a pool, and sets the header of global CPackets made from now on.
    /// The pool keeps its configuration once it is in use, which is logged; the header follows nevertheless.
    /// @param totalSize  bytes of the pool, a multiple of chunkSize
    /// @param chunkSize  bytes of its smallest block, a power of two, 1024 or more; other values end the
    ///                   process by assertion
    /// @param headerSize bytes of the header of each packet, below 256
    static void config(int totalSize, int chunkSize, int headerSize);
};

/// The one IPacketManager.
class FUNDO_API CPacketManager : public IPacketManager {
public:
    /// The one manager.
    static CPacketManager* instance();

    unsigned long GetBufferSize() override;  ///< Bytes of the pool.
    unsigned long GetFreeSize() override;    ///< Bytes in the pool's free blocks.
    void DumpNodes() override;               ///< Logs the state of the pool.

private:
    friend class Tovra::Fundo::Detail::Instance<CPacketManager, true>;
    CPacketManager() = default;
};

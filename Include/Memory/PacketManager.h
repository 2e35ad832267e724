#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/Function.h"

namespace Tovra::Fundo::Detail {
template <class T, bool lasting>
class Instance;
}

namespace Tovra::Memory {

class PacketManagerInternal;

/// Where the memory of all packets of the process comes from.
///
/// The configuration is frozen at the first use, which any packet is; before it, config() chooses a policy:
///
///   policy          packets take             sizes        dumpNodes()
///   PolicySystem    malloc of the operator   0            "CPacketManager dump: SYS Policy\n"
///   PolicyPool      a block of the pool      of the pool  the free lists
///   PolicyPoolData  data from the pool, the  of the pool  "CPacketManager dump: SYS Policy\n"
///                   record from the heap
///   PolicyNoPool    nothing: packets with    0            nothing
///                   own storage are refused
///
/// The pool is one region under a binary buddy allocator: blocks are chunkSize bytes times a power of two, a
/// block costs a number of steps that is bounded by the logarithm of the number of chunks, and the region
/// holds payload alone. A policy above the last builds the pool, uses the operator and refuses packets.
///
/// Any thread may call any operation once the manager exists; config() before that is for one thread. At
/// process exit the region is given back, with the blocks still in use: packets from a pool must be gone by
/// then. Under PolicySystem packets can be released to the very end.
class FUNDO_API CPacketManager {
public:
    /// See the table at the class. 0 stands for the policy in force.
    enum Policy : int {
        PolicySystem = 1,    ///< From the operator, a block a packet; the default.
        PolicyPool = 2,      ///< From the pool, a block a packet.
        PolicyPoolData = 3,  ///< Data from the pool, the rest from the heap.
        PolicyNoPool = 4     ///< No packets with storage of their own.
    };

    /// The measures of the pool.
    struct PoolParameter {
        size_t totalSize = 0x200000;  ///< Bytes of the pool; a multiple of chunkSize.
        size_t chunkSize = 1024;      ///< Bytes of the smallest block; a power of two, 1024 or more.
        size_t alignSize = 4;         ///< Alignment in a packet's layout, 4 or more; a power of two.
    };

    /// What memory comes from; the system's operations by default. None may be empty. Called on any thread,
    /// with no lock held.
    struct MemoryOperator {
        /// Gives a block of that many bytes, or null.
        Fundo::TFunction1<void*, size_t> malloc{&std::malloc};
        /// Takes a block back.
        Fundo::TFunction1<void, void*> free{&std::free};
        /// Copies between blocks of malloc. Under a pool it serves copies from pool to pool; all others are
        /// the system's.
        Fundo::TFunction3<void*, void*, const void*, size_t> memcpy{&std::memcpy};
    };

    /// The one manager. Its first use, or the first packet, builds the pool and freezes the configuration.
    /// A pool that the operator has no memory for stops the process ("NULL != m_pOriginBuffer").
    static CPacketManager* instance();

    /// Sets the configuration. When it is frozen, nothing changes and "PacketManagerInternal::config()
    /// failured: Packet Manager has been configured!\n" is logged at level 3. Parameters out of range and an
    /// empty operation end the process by assertion.
    /// @param policy 0 keeps the present one
    /// @param memop  null keeps the present operations; copied
    /// @param param  null keeps the present measures; copied
    static void config(Policy policy, MemoryOperator* memop, PoolParameter* param);

    /// Where the pool's region starts, as the operator's malloc gave it; null without a pool. The first chunk
    /// lies up to a chunk above.
    static void* getPoolBuffer();

    /// A block from the pool or the operator, by the policy. Under a pool the block is rounded up to a power
    /// of two of chunks.
    /// @return null if there is none; a pool then logs "CPacket No Free Space\n" at level 4. A pool never
    /// gives a block of size 0
    void* malloc(size_t size);

    /// Takes a block back. A pool ignores null; a pointer below the pool ends the process by assertion. Any
    /// other pointer that is no block corrupts the pool; a debug build of the library stops at it.
    void free(void* pointer);

    /// Copies n bytes that do not overlap, by the operator where it applies. @return dst
    void* memcpy(void* dst, const void* src, size_t n);

    /// Bytes of the pool; 0 without one.
    size_t getBufferSize();

    /// Bytes in the pool's free blocks; 0 without a pool. Walks the free lists.
    size_t getFreeSize();

    /// Logs the free lists at level 4. The pool's lock is held meanwhile: a print procedure must not allocate
    /// or release packets.
    void dumpNodes();

private:
    friend class Fundo::Detail::Instance<CPacketManager, true>;
    CPacketManager();

    PacketManagerInternal* m_internal;
};

}  // namespace Tovra::Memory

// A file on its way through packets.
//
//   FundoPackets [FILE]        its own executable by default
//
// The file is read in chunks into packets of a small pool. Each chunk is cut into sub-packets, which share
// its bytes, and these go to a thread in the wrong order, each with its place in its extra area. The thread
// puts them in order again and compares them with the file, read anew. A chunk's block returns to the pool
// when its last sub-packet is dropped; while the pool is empty, the reader waits.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>

#include "Fundo/Fundo3/File.h"
#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/Semaphore.h"
#include "Fundo/Fundo3/ThreadLite.h"
#include "Memory/Packet.h"
#include "Memory/PacketManager.h"

using namespace Tovra::Fundo;
using Tovra::Memory::CPacket;
using Tovra::Memory::CPacketManager;

namespace {

constexpr size_t kPoolSize = 512 * 1024;
constexpr size_t kChunkSize = 60000;
constexpr size_t kPieceSize = 1400;

// A handle is as cheap to queue as a pointer.
class PacketQueue {
public:
    void put(const CPacket& packet) {
        m_mutex.enter();
        m_packets.push_back(packet);
        m_mutex.leave();
        m_filled.post();
    }

    CPacket take() {
        m_filled.pend();
        m_mutex.enter();
        const CPacket packet = m_packets.front();
        m_packets.pop_front();
        m_mutex.leave();
        return packet;
    }

private:
    CMutex m_mutex;
    CSemaphore m_filled{0};
    std::deque<CPacket> m_packets;
};

// Puts pieces in order and compares them with the file. An empty handle ends it.
class Assembler {
public:
    Assembler(PacketQueue& queue, const char* path)
        : m_queue(queue), m_thread({&Assembler::work, this}, "Assembler", 64, 0, 0) {
        m_opened = m_file.open(path, CFile::modeRead);
        m_thread.createThread();
    }

    // Waits for the end of the queue. @return the bytes that arrived and are the file's
    uint64_t finish() {
        while (!m_thread.isThreadOver())
            CThread::sleep(1);
        return m_opened && m_equal ? m_next : 0;
    }

private:
    void work(CThreadLite&) {
        for (CPacket piece = m_queue.take(); piece.valid(); piece = m_queue.take()) {
            uint64_t place = 0;
            std::memcpy(&place, piece.getExtraData(), sizeof place);
            m_waiting[place] = piece;
            piece.reset();
            takeInOrder();
        }
    }

    void takeInOrder() {
        for (auto first = m_waiting.begin(); first != m_waiting.end() && first->first == m_next;
             first = m_waiting.erase(first)) {
            const CPacket& piece = first->second;
            char expected[kPieceSize];
            const bool read = m_file.read(expected, piece.size()) == static_cast<long>(piece.size());
            m_equal = m_equal && read && std::memcmp(expected, piece.getBuffer(), piece.size()) == 0;
            m_next += piece.size();
        }
    }

    PacketQueue& m_queue;
    CFile m_file;
    bool m_opened = false;
    bool m_equal = true;
    uint64_t m_next = 0;
    std::map<uint64_t, CPacket> m_waiting;
    CThreadLite m_thread;
};

// A packet from the pool, as soon as there is one.
CPacket waitForPacket() {
    CPacket packet(kChunkSize, 0);
    while (!packet.valid()) {
        CThread::sleep(1);
        packet = CPacket(kChunkSize, 0);
    }
    return packet;
}

// The last piece first, so that order has to be made.
void sendPieces(PacketQueue& queue, const CPacket& chunk, uint64_t chunkPlace) {
    for (size_t count = (chunk.size() + kPieceSize - 1) / kPieceSize; count-- > 0;) {
        const size_t offset = count * kPieceSize;
        const uint64_t place = chunkPlace + offset;
        const CPacket piece(chunk, offset, std::min(kPieceSize, chunk.size() - offset), sizeof place);
        std::memcpy(piece.getExtraData(), &place, sizeof place);
        queue.put(piece);
    }
}

struct Sent {
    uint64_t bytes = 0;
    size_t leastFree = kPoolSize;
};

Sent sendFile(CFile& file, PacketQueue& queue) {
    Sent sent;
    for (;;) {
        CPacket chunk = waitForPacket();
        sent.leastFree = std::min(sent.leastFree, CPacketManager::instance()->getFreeSize());
        const long count = file.read(chunk.getBuffer(), kChunkSize);
        if (count <= 0) break;
        chunk.resize(static_cast<size_t>(count));
        sendPieces(queue, chunk, sent.bytes);
        sent.bytes += static_cast<uint64_t>(count);
    }
    queue.put(CPacket());
    return sent;
}

}  // namespace

int main(int argc, char** argv) {
    const char* path = argc > 1 ? argv[1] : "/proc/self/exe";
    CPacketManager::PoolParameter param;
    param.totalSize = kPoolSize;
    CPacketManager::config(CPacketManager::PolicyPool, nullptr, &param);
    CPacketManager* manager = CPacketManager::instance();

    CFile file;
    if (!file.open(path, CFile::modeRead)) {
        std::fprintf(stderr, "cannot read %s\n", path);
        return 1;
    }
    std::printf("pool    %8zu bytes\n", manager->getBufferSize());
    std::printf("before  %8zu free\n", manager->getFreeSize());
    PacketQueue queue;
    Assembler assembler(queue, path);
    const Sent sent = sendFile(file, queue);
    const uint64_t arrived = assembler.finish();
    std::printf("during  %8zu free at least\n", sent.leastFree);
    std::printf("after   %8zu free\n", manager->getFreeSize());
    const bool equal = arrived == sent.bytes && manager->getFreeSize() == manager->getBufferSize();
    std::printf("%s: %llu bytes sent, %llu arrived and compared: %s\n", path,
                static_cast<unsigned long long>(sent.bytes), static_cast<unsigned long long>(arrived),
                equal ? "equal" : "DIFFERENT");
    return equal ? 0 : 1;
}

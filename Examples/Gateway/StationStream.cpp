#include "StationStream.h"

#include <memory>

#include "Component/Client.h"
#include "Fundo/Fundo3/Error.h"
#include "Fundo/Fundo3/Thread.h"
#include "StationClient.h"
#include "Utils/Crc.h"

using namespace Tovra::Component;
using Tovra::Memory::CPacket;

namespace {

class StationStream : public IStream {
public:
    bool open(const ServerInfo& info) {
        if (!m_connection.connect(info.address, info.port)) return fail(kUnreachable);
        const auto user = static_cast<uint32_t>(IClient::getCurrentUserID());
        FrameHead answer;
        const auto question = bareHead(Kind::kOpen, user, static_cast<uint16_t>(info.value3));
        const Socket::Result result = m_connection.ask(question, nullptr, Kind::kOpenAnswer, answer);
        if (result == Socket::kGarbage) return fail(kGarbled);
        if (result != Socket::kFrame) return fail(kUnreachable);
        return answer.sequence != 0 || fail(kRefusedChannel);
    }

    Result receive(CPacket& packet, int milliseconds) override {
        FrameHead head;
        const Socket::Result result = m_connection.receiveHead(head, milliseconds);
        if (result == Socket::kNothing) return kNothing;
        if (result == Socket::kFrame && head.kind == Kind::kEnd) return kEnded;
        if (result != Socket::kFrame || head.kind != Kind::kData) return kBroken;

        packet = roomFor(head);
        *static_cast<FrameHead*>(packet.getExtraData()) = head;
        if (!m_connection.receive(packet.getBuffer(), head.length)) return kBroken;
        const auto* bytes = static_cast<const unsigned char*>(packet.getBuffer());
        return Tovra::Utils::crc32(bytes, head.length) == head.crc ? kFrame : kDamaged;
    }

    void finish() override { m_connection.send(bareHead(Kind::kClose)); }

    void destroy() override { delete this; }
    void reservedOperation() override {}

private:
    static bool fail(int error) {
        Tovra::Fundo::setLastError(error);
        return false;
    }

    // Until other channels give packets back, the frame waits in the connection.
    static CPacket roomFor(const FrameHead& head) {
        for (;;) {
            CPacket packet(head.length, sizeof head);
            if (packet.valid()) return packet;
            Tovra::Fundo::CThread::sleep(10);
        }
    }

    Socket m_connection;
};

}  // namespace

IUnknown* StationStreamFactory::create(const ServerInfo& info) {
    auto stream = std::make_unique<StationStream>();
    return stream->open(info) ? stream.release() : nullptr;
}

#include "Channel.h"

#include "Component/Client.h"
#include "Component/ServerInfoQueryer.h"
#include "Fundo/Fundo3/Error.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/Fundo3/Time.h"
#include "Support/Guard.h"

using namespace Tovra::Component;
using namespace Tovra::Fundo;
using Tovra::Memory::CPacket;

static constexpr char kName[] = "channel";

namespace {

// All in milliseconds.
constexpr int kSlice = 100;          // how long a stop can go unnoticed
constexpr int kRetryDelay = 300;     // between two attempts to open
constexpr uint64_t kSilence = 3000;  // a stream without a frame for so long is broken
constexpr int kDeadline = 8000;      // the supervision's limit for one round

}  // namespace

Channel::Channel(int number, const std::string& folder)
    : m_number(number),
      m_thread({&Channel::work, this}, ("Channel " + std::to_string(number)).c_str(), 64, 0, 0) {
    const std::string path = folder + "/channel-" + std::to_string(number) + ".rec";
    if (!m_recording.open(path.c_str(), CLfsFile::modeWrite | CLfsFile::modeCreate)) {
        FUNDO_LOG_ERROR(kName, "%s cannot be written\n", path.c_str());
    }
    m_thread.createThread();
}

TallyResult Channel::result() {
    const Guard guard(m_tallyMutex);
    return m_tally ? m_tally->result() : TallyResult();
}

void Channel::work(CThreadLite& thread) {
    while (thread.looping()) {
        CThread::setCurrentTimeout(kDeadline);
        if (open()) {
            receive(thread);
            m_stream.reset();
        }
        for (int waited = 0; thread.looping() && waited < kRetryDelay; waited += kSlice)
            CThread::sleep(kSlice);
    }
    m_factory.reset();
    m_recording.close();
}

bool Channel::open() {
    findTally();
    if (openStream()) {
        FUNDO_LOG_INFO(kName, "%d: open, user %d\n", m_number, IClient::getCurrentUserID());
        ++m_opened;
        return true;
    }
    FUNDO_LOG_WARN(kName, "%d: %s Trying again.\n", m_number, getErrorMessage(getLastError()).c_str());
    return false;
}

bool Channel::openStream() {
    CString clsid;
    ServerInfo info = {};
    if (!CServerInfoQueryerHelper::instance()->getServerInfoByChannel(m_number, clsid, info)) return false;
    // Finds the station's client and logs it in if need be, on this thread.
    auto factory = getComponentFactory<IFactoryUnknown>("Channel", ClassID(clsid.c_str()), info);
    if (!factory) return false;
    m_factory = factory;
    m_stream = TComPtr<IStream>(dynamic_cast<IStream*>(m_factory->create(info)));
    return static_cast<bool>(m_stream);
}

// Looks again at each attempt: a library that was missing may have come.
void Channel::findTally() {
    const Guard guard(m_tallyMutex);
    if (m_tally) return;
    m_tally = createComponentObject<ITally>("Tally");
    if (!m_tally) FUNDO_LOG_ERROR(kName, "%d: no component \"Tally\", so no statistics\n", m_number);
}

void Channel::receive(CThreadLite& thread) {
    bool finishing = false;
    uint64_t lastFrame = CTime::getCurrentMilliSecond();
    for (;;) {
        if (!thread.looping() && !finishing) {
            finishing = true;
            m_stream->finish();
        }
        CPacket packet;
        const IStream::Result result = m_stream->receive(packet, kSlice);
        const uint64_t now = CTime::getCurrentMilliSecond();
        if (result == IStream::kEnded) return;
        if (result == IStream::kBroken || now - lastFrame > kSilence) {
            FUNDO_LOG_WARN(kName, "%d: the stream has broken\n", m_number);
            return;
        }
        if (result == IStream::kNothing) continue;
        lastFrame = now;
        CThread::setCurrentTimeout(kDeadline);
        if (result == IStream::kFrame) take(packet);
        if (result == IStream::kDamaged) {
            ++m_damaged;
            FUNDO_LOG_ERROR(kName, "%d: a frame of %zu bytes is damaged\n", m_number, packet.size());
        }
    }
}

void Channel::take(const CPacket& packet) {
    const auto& head = *static_cast<const FrameHead*>(packet.getExtraData());
    uint8_t bytes[kHeadSize];
    encode(head, bytes);
    m_recording.write(bytes, sizeof bytes);
    m_recording.write(packet.getBuffer(), head.length);
    const Guard guard(m_tallyMutex);
    if (m_tally) m_tally->add(head.sequence, head.length);
}

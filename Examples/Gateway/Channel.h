#pragma once

#include <atomic>
#include <string>

#include "Component/ComPtr.h"
#include "Component/ComponentFactory.h"
#include "Fundo/Fundo3/LfsFile.h"
#include "Fundo/Fundo3/Mutex.h"
#include "Fundo/Fundo3/ThreadLite.h"
#include "StationStream.h"
#include "Tally.h"

// One channel: a thread that asks for the channel's stream, appends every frame to a recording, and starts
// over when the stream breaks. It holds its client as long as it lives.
class Channel {
public:
    // @param folder takes the recording "channel-<number>.rec"
    Channel(int number, const std::string& folder);
    // Waits for the thread.
    ~Channel() {
        if (!m_thread.isThreadOver()) m_thread.destroyThread();
    }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    // Asks the thread to finish its stream and end.
    void cancel() { m_thread.cancelThread(); }
    bool isOver() { return m_thread.isThreadOver(); }

    int number() const { return m_number; }
    TallyResult result();
    uint64_t damaged() const { return m_damaged; }
    int opened() const { return m_opened; }

private:
    void work(Tovra::Fundo::CThreadLite& thread);
    bool open();
    bool openStream();
    void findTally();
    void receive(Tovra::Fundo::CThreadLite& thread);
    void take(const Tovra::Memory::CPacket& packet);

    const int m_number;
    Tovra::Fundo::CLfsFile m_recording;
    Tovra::Component::TComPtr<Tovra::Component::IFactoryUnknown> m_factory;
    Tovra::Component::TComPtr<IStream> m_stream;
    Tovra::Fundo::CMutex m_tallyMutex;
    Tovra::Component::TComPtr<ITally> m_tally;
    std::atomic<uint64_t> m_damaged{0};
    std::atomic<int> m_opened{0};
    Tovra::Fundo::CThreadLite m_thread;
};

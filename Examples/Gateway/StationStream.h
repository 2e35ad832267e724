#pragma once

#include "Component/ComponentFactory.h"
#include "Memory/Packet.h"
#include "Socket.h"

// The frames of one channel, as they come. One thread at a time.
class IStream : public Tovra::Component::IUnknown {
public:
    enum Result { kFrame, kNothing, kDamaged, kEnded, kBroken };

    // Takes one frame: its payload is the packet, its head lies in the packet's extra area.
    // @return kNothing if none began within that many milliseconds; kDamaged for a wrong CRC
    virtual Result receive(Tovra::Memory::CPacket& packet, int milliseconds) = 0;
    // Asks the station to finish; what it has sent before still comes, then kEnded.
    virtual void finish() = 0;
};

// Opens streams at a station, as the current user of the calling thread: reached through a client's pointer,
// that is the user whom the client has logged in. The channel is ServerInfo::value3.
class StationStreamFactory : public Tovra::Component::IFactoryUnknown {
public:
    Tovra::Component::ClassID clsid() const override { return "Station.main"; }
    // @return an IStream, or null with the last error set
    Tovra::Component::IUnknown* create(const Tovra::Component::ServerInfo& info) override;
};

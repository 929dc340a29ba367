#include "host/headend/Programme.h"

#include "host/wire/Crc.h"

namespace headend {

namespace {

// Packets of packet mode (EN 300 401 5.3.2): 24 bytes each, header, one byte of lengths, data, check sum. All are padding
// with address 0 here: the service is there, and it says nothing.
void FillWithPackets(wire::ByteVector& bytes) {
    constexpr std::size_t kPacket = 24;
    wire::ByteVector packet = {0x00, 0x00, 0x00}; // length 24, first and last 0, address 0, no useful data
    packet.resize(kPacket - 2);
    wire::AppendCrc16(packet);
    for (std::size_t at = 0; at < bytes.size(); ++at)
        bytes[at] = packet[at % kPacket];
}

} // namespace

Programme MakeData(const ServiceDescription& service, const Stretch& stretch) {
    Programme programme;
    programme.bytes.resize(static_cast<std::size_t>(stretch.frames) * static_cast<std::size_t>(stretch.kbps) * 3);
    if (service.kind == ServiceKind::kPacketData) {
        FillWithPackets(programme.bytes);
        return programme;
    }
    // Bytes that mean nothing to anybody, but not a constant either.
    std::uint32_t state = service.id;
    for (std::uint8_t& byte : programme.bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return programme;
}

Programme MakeProgramme(const Description& description, const ServiceDescription& service, const Stretch& stretch,
                        const std::stop_token& stop) {
    switch (service.kind) {
    case ServiceKind::kTelevision:
        return MakeTelevision(description, service, stretch, stop);
    case ServiceKind::kRadio:
        return MakeRadio(description, service, stretch);
    case ServiceKind::kDabPlus:
    case ServiceKind::kStreamData:
    case ServiceKind::kPacketData:
        break;
    }
    return MakeData(service, stretch);
}

} // namespace headend

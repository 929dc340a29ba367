// FIG 0/0 to 0/8: the multiplex configuration (EN 300 401 clause 6).
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/wire/Bytes.h"
#include "host/wire/Fig0Header.h"

namespace wire {

// FIG 0/0, ensemble information (6.4).
struct EnsembleInformation {
    std::uint16_t ensembleId = 0;
    int changeFlags = 0; // 0 none, 1 sub-channels, 2 services, 3 both
    bool alarm = false;
    int cifCountHigh = 0; // modulo 20
    int cifCountLow = 0;  // modulo 250
    int occurrenceChange = 0;
};

[[nodiscard]] inline std::optional<EnsembleInformation> ParseFig0_0(ByteSpan body) {
    if (body.size() < 4)
        return std::nullopt;
    EnsembleInformation info;
    info.ensembleId = static_cast<std::uint16_t>(Get16(body, 0));
    info.changeFlags = body[2] >> 6;
    info.alarm = (body[2] & 0x20) != 0;
    info.cifCountHigh = body[2] & 0x1F;
    info.cifCountLow = body[3];
    if (info.changeFlags != 0 && body.size() >= 5)
        info.occurrenceChange = body[4];
    return info;
}

inline void AppendFig0_0(ByteVector& out, const EnsembleInformation& info) {
    Append16(out, info.ensembleId);
    out.push_back(
        static_cast<std::uint8_t>((info.changeFlags << 6) | (info.alarm ? 0x20 : 0) | (info.cifCountHigh & 0x1F)));
    out.push_back(static_cast<std::uint8_t>(info.cifCountLow));
    if (info.changeFlags != 0)
        out.push_back(static_cast<std::uint8_t>(info.occurrenceChange));
}

// One row of the table of unequal error protection profiles (6.2.1, table 7).
struct UepProfile {
    std::uint16_t size; // capacity units
    std::uint8_t level; // 1 to 5
    std::uint16_t bitRate;
};

inline constexpr std::array<UepProfile, 64> kUepProfiles = {{
    {16, 5, 32},   {21, 4, 32},   {24, 3, 32},   {29, 2, 32},   {35, 1, 32},   {24, 5, 48},   {29, 4, 48},
    {35, 3, 48},   {42, 2, 48},   {52, 1, 48},   {29, 5, 56},   {35, 4, 56},   {42, 3, 56},   {52, 2, 56},
    {32, 5, 64},   {42, 4, 64},   {48, 3, 64},   {58, 2, 64},   {70, 1, 64},   {40, 5, 80},   {52, 4, 80},
    {58, 3, 80},   {70, 2, 80},   {84, 1, 80},   {48, 5, 96},   {58, 4, 96},   {70, 3, 96},   {84, 2, 96},
    {104, 1, 96},  {58, 5, 112},  {70, 4, 112},  {84, 3, 112},  {104, 2, 112}, {64, 5, 128},  {84, 4, 128},
    {96, 3, 128},  {116, 2, 128}, {140, 1, 128}, {80, 5, 160},  {104, 4, 160}, {116, 3, 160}, {140, 2, 160},
    {168, 1, 160}, {96, 5, 192},  {116, 4, 192}, {140, 3, 192}, {168, 2, 192}, {208, 1, 192}, {116, 5, 224},
    {140, 4, 224}, {168, 3, 224}, {208, 2, 224}, {232, 1, 224}, {128, 5, 256}, {168, 4, 256}, {192, 3, 256},
    {232, 2, 256}, {280, 1, 256}, {160, 5, 320}, {208, 4, 320}, {280, 2, 320}, {192, 5, 384}, {280, 3, 384},
    {416, 1, 384},
}};

// FIG 0/1, basic sub-channel organisation (6.2.1).
struct SubChannelEntry {
    int subChannelId = 0;
    int startAddress = 0; // capacity units
    bool longForm = false;
    // Short form: an index into kUepProfiles.
    int uepIndex = 0;
    bool tableSwitch = false;
    // Long form: option 0 is set A, 1 set B; level 1 to 4.
    int option = 0;
    int level = 1;
    int size = 0; // capacity units, in both forms

    // kbit/s; 0 when the option is not known.
    [[nodiscard]] int BitRate() const {
        constexpr int kSetA[] = {12, 8, 6, 4};
        constexpr int kSetB[] = {27, 21, 18, 15};
        if (!longForm)
            return kUepProfiles[static_cast<std::size_t>(uepIndex)].bitRate;
        if (option == 0)
            return size * 8 / kSetA[level - 1];
        return option == 1 ? size * 32 / kSetB[level - 1] : 0;
    }
    bool operator==(const SubChannelEntry&) const = default;
};

template <typename Visit> void ForEachFig0_1(ByteSpan body, Visit visit) {
    while (body.size() >= 3) {
        SubChannelEntry entry;
        entry.subChannelId = body[0] >> 2;
        entry.startAddress = static_cast<int>(Get16(body, 0) & 0x3FF);
        entry.longForm = (body[2] & 0x80) != 0;
        if (entry.longForm) {
            if (body.size() < 4)
                return;
            entry.option = (body[2] >> 4) & 7;
            entry.level = ((body[2] >> 2) & 3) + 1;
            entry.size = static_cast<int>(Get16(body, 2) & 0x3FF);
        } else {
            entry.tableSwitch = (body[2] & 0x40) != 0;
            entry.uepIndex = body[2] & 0x3F;
            entry.size = kUepProfiles[static_cast<std::size_t>(entry.uepIndex)].size;
            entry.level = kUepProfiles[static_cast<std::size_t>(entry.uepIndex)].level;
        }
        visit(entry);
        body = body.subspan(entry.longForm ? 4 : 3);
    }
}

inline void AppendFig0_1(ByteVector& out, const SubChannelEntry& entry) {
    Append16(out, static_cast<std::uint32_t>((entry.subChannelId << 10) | entry.startAddress));
    if (entry.longForm)
        Append16(out,
                 0x8000u | static_cast<std::uint32_t>((entry.option << 12) | ((entry.level - 1) << 10) | entry.size));
    else
        out.push_back(static_cast<std::uint8_t>((entry.tableSwitch ? 0x40 : 0) | entry.uepIndex));
}

// How a service component is carried (TMId).
enum class Transport : std::uint8_t { StreamAudio = 0, StreamData = 1, Fidc = 2, Packet = 3 };

inline constexpr int kAudioTypeLayerTwo = 0;  // ASCTy, TS 101 756 table 2a
inline constexpr int kAudioTypeDabPlus = 63;  // ASCTy
inline constexpr int kDataTypeTransport = 24; // DSCTy: MPEG-2 transport stream, that is T-DMB television
inline constexpr int kDataTypeMot = 60;       // DSCTy

// One component of a service in FIG 0/2 (6.3.1).
struct ComponentEntry {
    Transport transport = Transport::StreamAudio;
    int type = 0;         // ASCTy or DSCTy; not sent for packet mode
    int subChannelId = 0; // FIDCId for the FIDC; not sent for packet mode
    int componentId = 0;  // SCId, packet mode only
    bool primary = false;
    bool conditionalAccess = false;
    bool operator==(const ComponentEntry&) const = default;
};

// FIG 0/2, service organisation (6.3.1).
struct ServiceEntry {
    std::uint32_t serviceId = 0;
    bool local = false;
    int accessId = 0; // CAId
    std::vector<ComponentEntry> components;
    bool operator==(const ServiceEntry&) const = default;
};

template <typename Visit> void ForEachFig0_2(ByteSpan body, bool longIds, Visit visit) {
    const std::size_t idBytes = longIds ? 4 : 2;
    while (body.size() >= idBytes + 1) {
        ServiceEntry service;
        service.serviceId = detail::GetServiceId(body, 0, longIds);
        service.local = (body[idBytes] & 0x80) != 0;
        service.accessId = (body[idBytes] >> 4) & 7;
        const std::size_t count = body[idBytes] & 0x0F;
        if (body.size() < idBytes + 1 + 2 * count)
            return;
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint32_t word = Get16(body, idBytes + 1 + 2 * i);
            ComponentEntry component;
            component.transport = static_cast<Transport>(word >> 14);
            if (component.transport == Transport::Packet) {
                component.componentId = static_cast<int>((word >> 2) & 0xFFF);
            } else {
                component.type = static_cast<int>((word >> 8) & 0x3F);
                component.subChannelId = static_cast<int>((word >> 2) & 0x3F);
            }
            component.primary = (word & 2) != 0;
            component.conditionalAccess = (word & 1) != 0;
            service.components.push_back(component);
        }
        visit(service);
        body = body.subspan(idBytes + 1 + 2 * count);
    }
}

inline void AppendFig0_2(ByteVector& out, const ServiceEntry& service, bool longIds) {
    detail::AppendServiceId(out, service.serviceId, longIds);
    out.push_back(static_cast<std::uint8_t>((service.local ? 0x80 : 0) | (service.accessId << 4) |
                                            static_cast<int>(service.components.size())));
    for (const ComponentEntry& c : service.components) {
        const int content =
            c.transport == Transport::Packet ? c.componentId << 2 : (c.type << 8) | (c.subChannelId << 2);
        Append16(out, static_cast<std::uint32_t>((static_cast<int>(c.transport) << 14) | content | (c.primary ? 2 : 0) |
                                                 (c.conditionalAccess ? 1 : 0)));
    }
}

// FIG 0/3, service component in packet mode (6.3.2).
struct PacketComponentEntry {
    int componentId = 0;
    bool accessOrganisation = false; // two more bytes follow
    bool dataGroups = true;          // sent as 0 when data groups are used
    int type = 0;                    // DSCTy
    int subChannelId = 0;
    int packetAddress = 0;
    std::uint16_t access = 0;
};

template <typename Visit> void ForEachFig0_3(ByteSpan body, Visit visit) {
    while (body.size() >= 5) {
        PacketComponentEntry entry;
        entry.componentId = static_cast<int>(Get16(body, 0) >> 4);
        entry.accessOrganisation = (body[1] & 1) != 0;
        entry.dataGroups = (body[2] & 0x80) == 0;
        entry.type = body[2] & 0x3F;
        entry.subChannelId = body[3] >> 2;
        entry.packetAddress = static_cast<int>(Get16(body, 3) & 0x3FF);
        const std::size_t bytes = entry.accessOrganisation ? 7 : 5;
        if (body.size() < bytes)
            return;
        if (entry.accessOrganisation)
            entry.access = static_cast<std::uint16_t>(Get16(body, 5));
        visit(entry);
        body = body.subspan(bytes);
    }
}

inline void AppendFig0_3(ByteVector& out, const PacketComponentEntry& entry) {
    Append16(out, static_cast<std::uint32_t>((entry.componentId << 4) | (entry.accessOrganisation ? 1 : 0)));
    out.push_back(static_cast<std::uint8_t>((entry.dataGroups ? 0 : 0x80) | entry.type));
    Append16(out, static_cast<std::uint32_t>((entry.subChannelId << 10) | entry.packetAddress));
    if (entry.accessOrganisation)
        Append16(out, entry.access);
}

// FIG 0/7, configuration information (V2.1.1, 6.4.2): how many services there are in all.
struct ConfigurationInformation {
    int services = 0;
    int count = 0;
};

[[nodiscard]] inline std::optional<ConfigurationInformation> ParseFig0_7(ByteSpan body) {
    if (body.size() < 2)
        return std::nullopt;
    const std::uint32_t word = Get16(body, 0);
    return ConfigurationInformation{static_cast<int>(word >> 10), static_cast<int>(word & 0x3FF)};
}

inline void AppendFig0_7(ByteVector& out, const ConfigurationInformation& info) {
    Append16(out, static_cast<std::uint32_t>((info.services << 10) | info.count));
}

// FIG 0/8, service component global definition (6.3.5).
struct ComponentDefinition {
    std::uint32_t serviceId = 0;
    int componentIdInService = 0; // SCIdS
    bool longForm = false;
    int subChannelId = 0; // short form
    bool fidc = false;    // short form: subChannelId is an FIDCId
    int componentId = 0;  // long form: SCId
    bool extension = false;
};

template <typename Visit> void ForEachFig0_8(ByteSpan body, bool longIds, Visit visit) {
    const std::size_t idBytes = longIds ? 4 : 2;
    while (body.size() >= idBytes + 2) {
        ComponentDefinition entry;
        entry.serviceId = detail::GetServiceId(body, 0, longIds);
        entry.extension = (body[idBytes] & 0x80) != 0;
        entry.componentIdInService = body[idBytes] & 0x0F;
        entry.longForm = (body[idBytes + 1] & 0x80) != 0;
        const std::size_t bytes = idBytes + 2 + (entry.longForm ? 1 : 0) + (entry.extension ? 1 : 0);
        if (body.size() < bytes)
            return;
        if (entry.longForm) {
            entry.componentId = static_cast<int>(Get16(body, idBytes + 1) & 0xFFF);
        } else {
            entry.fidc = (body[idBytes + 1] & 0x40) != 0;
            entry.subChannelId = body[idBytes + 1] & 0x3F;
        }
        visit(entry);
        body = body.subspan(bytes);
    }
}

inline void AppendFig0_8(ByteVector& out, const ComponentDefinition& entry, bool longIds) {
    detail::AppendServiceId(out, entry.serviceId, longIds);
    out.push_back(static_cast<std::uint8_t>((entry.extension ? 0x80 : 0) | entry.componentIdInService));
    if (entry.longForm)
        Append16(out, 0x8000u | static_cast<std::uint32_t>(entry.componentId));
    else
        out.push_back(static_cast<std::uint8_t>((entry.fidc ? 0x40 : 0) | entry.subChannelId));
    if (entry.extension)
        out.push_back(0);
}

} // namespace wire

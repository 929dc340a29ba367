// FIG 0/9 to 0/18: service information and user applications (EN 300 401 clauses 6.2.2, 6.3.6 and 8.1).
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/wire/Bytes.h"
#include "host/wire/Fig0Header.h"

namespace wire {

// FIG 0/9, country and local time (8.1.3.2).
struct CountryInformation {
    int localTimeOffset = 0; // half hours, -31 to 31
    int extendedCountryCode = 0;
    int internationalTable = 0;
};

[[nodiscard]] inline std::optional<CountryInformation> ParseFig0_9(ByteSpan body) {
    if (body.size() < 3)
        return std::nullopt;
    const int offset = body[0] & 0x1F;
    return CountryInformation{(body[0] & 0x20) ? -offset : offset, body[1], body[2]};
}

inline void AppendFig0_9(ByteVector& out, const CountryInformation& info) {
    const int offset = info.localTimeOffset < 0 ? 0x20 | -info.localTimeOffset : info.localTimeOffset;
    out.push_back(static_cast<std::uint8_t>(offset));
    out.push_back(static_cast<std::uint8_t>(info.extendedCountryCode));
    out.push_back(static_cast<std::uint8_t>(info.internationalTable));
}

// FIG 0/10, date and time in UTC (8.1.3.1).
struct DateAndTime {
    std::uint32_t modifiedJulianDate = 0;
    bool leapSecond = false;
    int hours = 0;
    int minutes = 0;
    bool longForm = false;
    int seconds = 0;
    int milliseconds = 0;
};

[[nodiscard]] inline std::optional<DateAndTime> ParseFig0_10(ByteSpan body) {
    if (body.size() < 4)
        return std::nullopt;
    const std::uint32_t word = Get32(body, 0);
    DateAndTime time;
    time.modifiedJulianDate = (word >> 14) & 0x1FFFF;
    time.leapSecond = (word & 0x2000) != 0;
    time.longForm = (word & 0x800) != 0;
    time.hours = static_cast<int>((word >> 6) & 0x1F);
    time.minutes = static_cast<int>(word & 0x3F);
    if (time.longForm) {
        if (body.size() < 6)
            return std::nullopt;
        time.seconds = body[4] >> 2;
        time.milliseconds = static_cast<int>(Get16(body, 4) & 0x3FF);
    }
    return time;
}

inline void AppendFig0_10(ByteVector& out, const DateAndTime& time) {
    Append32(out, (time.modifiedJulianDate << 14) | (time.leapSecond ? 0x2000u : 0u) | 0x1000u |
                      (time.longForm ? 0x800u : 0u) | static_cast<std::uint32_t>(time.hours << 6) |
                      static_cast<std::uint32_t>(time.minutes));
    if (time.longForm)
        Append16(out, static_cast<std::uint32_t>((time.seconds << 10) | time.milliseconds));
}

inline constexpr int kUserApplicationSlideshow = 2; // TS 101 756 table 16
inline constexpr int kUserApplicationDmbVideo = 9;

// FIG 0/13, user applications of a component (6.3.6).
struct UserApplication {
    int type = 0;
    ByteVector data; // for X-PAD: CA and application type, DG flag and DSCTy

    // X-PAD application type of an application in the PAD of a programme; 0 when none is told.
    [[nodiscard]] int XPadType() const { return data.size() >= 2 ? data[0] & 0x1F : 0; }
    bool operator==(const UserApplication&) const = default;
};

struct UserApplicationEntry {
    std::uint32_t serviceId = 0;
    int componentIdInService = 0; // SCIdS
    std::vector<UserApplication> applications;
};

template <typename Visit> void ForEachFig0_13(ByteSpan body, bool longIds, Visit visit) {
    const std::size_t idBytes = longIds ? 4 : 2;
    while (body.size() >= idBytes + 1) {
        UserApplicationEntry entry;
        entry.serviceId = detail::GetServiceId(body, 0, longIds);
        entry.componentIdInService = body[idBytes] >> 4;
        const int count = body[idBytes] & 0x0F;
        body = body.subspan(idBytes + 1);
        for (int i = 0; i < count; ++i) {
            if (body.size() < 2)
                return;
            const std::uint32_t word = Get16(body, 0);
            const std::size_t length = word & 0x1F;
            if (body.size() < 2 + length)
                return;
            const ByteSpan data = body.subspan(2, length);
            entry.applications.push_back({static_cast<int>(word >> 5), ByteVector(data.begin(), data.end())});
            body = body.subspan(2 + length);
        }
        visit(entry);
    }
}

inline void AppendFig0_13(ByteVector& out, const UserApplicationEntry& entry, bool longIds) {
    detail::AppendServiceId(out, entry.serviceId, longIds);
    out.push_back(
        static_cast<std::uint8_t>((entry.componentIdInService << 4) | static_cast<int>(entry.applications.size())));
    for (const UserApplication& application : entry.applications) {
        Append16(out, static_cast<std::uint32_t>((application.type << 5) | static_cast<int>(application.data.size())));
        AppendBytes(out, application.data);
    }
}

// FIG 0/14, forward error correction of packet mode sub-channels (6.2.2).
struct FecScheme {
    int subChannelId = 0;
    int scheme = 0;
};

template <typename Visit> void ForEachFig0_14(ByteSpan body, Visit visit) {
    for (const std::uint8_t byte : body)
        visit(FecScheme{byte >> 2, byte & 3});
}

inline void AppendFig0_14(ByteVector& out, const FecScheme& fec) {
    out.push_back(static_cast<std::uint8_t>((fec.subChannelId << 2) | fec.scheme));
}

// FIG 0/17, programme type (8.1.5). The language field is optional.
struct ProgrammeType {
    std::uint16_t serviceId = 0;
    bool dynamic = false;
    std::optional<std::uint8_t> language;
    int code = 0;
};

template <typename Visit> void ForEachFig0_17(ByteSpan body, Visit visit) {
    while (body.size() >= 4) {
        ProgrammeType entry;
        entry.serviceId = static_cast<std::uint16_t>(Get16(body, 0));
        entry.dynamic = (body[2] & 0x80) != 0;
        const bool hasLanguage = (body[2] & 0x20) != 0;
        const bool hasComplement = (body[2] & 0x10) != 0;
        const std::size_t bytes = 4u + (hasLanguage ? 1 : 0) + (hasComplement ? 1 : 0);
        if (body.size() < bytes)
            return;
        if (hasLanguage)
            entry.language = body[3];
        entry.code = body[hasLanguage ? 4 : 3] & 0x1F;
        visit(entry);
        body = body.subspan(bytes);
    }
}

inline void AppendFig0_17(ByteVector& out, const ProgrammeType& entry) {
    Append16(out, entry.serviceId);
    out.push_back(static_cast<std::uint8_t>((entry.dynamic ? 0x80 : 0) | (entry.language ? 0x20 : 0)));
    if (entry.language)
        out.push_back(*entry.language);
    out.push_back(static_cast<std::uint8_t>(entry.code));
}

// FIG 0/18, announcement support (8.1.6.1).
struct AnnouncementSupport {
    std::uint16_t serviceId = 0;
    std::uint16_t types = 0;
    std::vector<std::uint8_t> clusters;
};

template <typename Visit> void ForEachFig0_18(ByteSpan body, Visit visit) {
    while (body.size() >= 5) {
        AnnouncementSupport entry;
        entry.serviceId = static_cast<std::uint16_t>(Get16(body, 0));
        entry.types = static_cast<std::uint16_t>(Get16(body, 2));
        const std::size_t count = body[4] & 0x1F;
        if (body.size() < 5 + count)
            return;
        const ByteSpan clusters = body.subspan(5, count);
        entry.clusters.assign(clusters.begin(), clusters.end());
        visit(entry);
        body = body.subspan(5 + count);
    }
}

inline void AppendFig0_18(ByteVector& out, const AnnouncementSupport& entry) {
    Append16(out, entry.serviceId);
    Append16(out, entry.types);
    out.push_back(static_cast<std::uint8_t>(entry.clusters.size()));
    AppendBytes(out, entry.clusters);
}

} // namespace wire

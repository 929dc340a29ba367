// Sections of program specific information in the long syntax, ISO/IEC 13818-1 2.4.4: the frame that all of
// them share, the program association section (2.4.4.3) and the program map section (2.4.4.8). ISO/IEC 14496
// sections (2.11.3, table ids 4 and 5) use the same frame around one SL packet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <vector>

#include "host/wire/Crc.h"

namespace wire {

inline constexpr std::uint8_t kTableIdPat = 0x00;
inline constexpr std::uint8_t kTableIdPmt = 0x02;
inline constexpr std::uint8_t kTableIdScene = 0x04;             // ISO_IEC_14496_scene_description_section
inline constexpr std::uint8_t kTableIdObjectDescriptors = 0x05; // ISO_IEC_14496_object_descriptor_section

// Stream types of a program map (table 2-34).
inline constexpr std::uint8_t kStreamTypeMpeg1Audio = 0x03;
inline constexpr std::uint8_t kStreamTypeMpeg2Audio = 0x04;
inline constexpr std::uint8_t kStreamTypeAdtsAac = 0x0F;
inline constexpr std::uint8_t kStreamTypeLatmAac = 0x11;
inline constexpr std::uint8_t kStreamTypeSlPes = 0x12;
inline constexpr std::uint8_t kStreamTypeSlSections = 0x13;
inline constexpr std::uint8_t kStreamTypeH264 = 0x1B;

// A whole section whose check sum held; `body` lies between the section numbers and the CRC and points into
// the bytes parsed.
struct PsiSection {
    std::uint8_t tableId = 0;
    std::uint16_t extension = 0; // transport_stream_id, program_number, ES_ID
    std::uint8_t version = 0;    // 5 bits
    bool current = true;
    std::uint8_t number = 0;
    std::uint8_t lastNumber = 0;
    std::span<const std::uint8_t> body{};

    // The size of the section that begins at `bytes`, or nothing while its length is not there yet.
    [[nodiscard]] static std::optional<std::size_t> SizeOf(std::span<const std::uint8_t> bytes) {
        if (bytes.size() < 3)
            return std::nullopt;
        return 3 + (static_cast<std::size_t>(bytes[1] & 0x0F) << 8 | bytes[2]);
    }

    // `bytes` is exactly one section. Nothing for the short syntax, a wrong length or a wrong check sum.
    [[nodiscard]] static std::optional<PsiSection> Parse(std::span<const std::uint8_t> bytes) {
        if (bytes.size() < 12 || (bytes[1] & 0x80) == 0 || SizeOf(bytes) != bytes.size() || Crc32(bytes) != 0)
            return std::nullopt;
        PsiSection section;
        section.tableId = bytes[0];
        section.extension = static_cast<std::uint16_t>(bytes[3] << 8 | bytes[4]);
        section.version = bytes[5] >> 1 & 0x1F;
        section.current = (bytes[5] & 1) != 0;
        section.number = bytes[6];
        section.lastNumber = bytes[7];
        section.body = bytes.subspan(8, bytes.size() - 12);
        return section;
    }

    [[nodiscard]] std::vector<std::uint8_t> Write() const {
        const std::size_t length = 5 + body.size() + 4;
        std::vector<std::uint8_t> out;
        out.reserve(3 + length);
        const std::uint8_t head[] = {
            tableId,
            // section_syntax_indicator, a bit that is 0 in program tables and 1 in the others, two reserved
            // ones
            static_cast<std::uint8_t>((tableId < kTableIdScene ? 0xB0 : 0xF0) | (length >> 8 & 0x0F)),
            static_cast<std::uint8_t>(length & 0xFF),
            static_cast<std::uint8_t>(extension >> 8),
            static_cast<std::uint8_t>(extension & 0xFF),
            static_cast<std::uint8_t>(0xC0 | (version & 0x1F) << 1 | (current ? 1 : 0)),
            number,
            lastNumber,
        };
        out.insert(out.end(), std::begin(head), std::end(head));
        out.insert(out.end(), body.begin(), body.end());
        AppendCrc32(out);
        return out;
    }
};

// 2.4.4.3: which packets carry the map of which programme. Programme 0 names the network PID.
struct Pat {
    struct Program {
        std::uint16_t number = 0;
        std::uint16_t mapPid = 0;
        bool operator==(const Program&) const = default;
    };
    std::vector<Program> programs{};

    [[nodiscard]] static std::optional<Pat> Parse(const PsiSection& section) {
        if (section.tableId != kTableIdPat || section.body.size() % 4 != 0)
            return std::nullopt;
        Pat pat;
        for (std::size_t at = 0; at < section.body.size(); at += 4) {
            const auto entry = section.body.subspan(at, 4);
            pat.programs.push_back({static_cast<std::uint16_t>(entry[0] << 8 | entry[1]),
                                    static_cast<std::uint16_t>((entry[2] & 0x1F) << 8 | entry[3])});
        }
        return pat;
    }

    // The body of the section.
    [[nodiscard]] std::vector<std::uint8_t> Write() const {
        std::vector<std::uint8_t> out;
        for (const Program& program : programs) {
            out.push_back(static_cast<std::uint8_t>(program.number >> 8));
            out.push_back(static_cast<std::uint8_t>(program.number & 0xFF));
            out.push_back(static_cast<std::uint8_t>(0xE0 | program.mapPid >> 8));
            out.push_back(static_cast<std::uint8_t>(program.mapPid & 0xFF));
        }
        return out;
    }
};

// A descriptor of the program map (2.6): tag, length byte, body.
struct PsiDescriptor {
    std::uint8_t tag = 0;
    std::vector<std::uint8_t> body{};
    bool operator==(const PsiDescriptor&) const = default;
};

// Nothing when a length runs over the end.
[[nodiscard]] inline std::optional<std::vector<PsiDescriptor>>
ParsePsiDescriptors(std::span<const std::uint8_t> bytes) {
    std::vector<PsiDescriptor> list{};
    while (!bytes.empty()) {
        if (bytes.size() < 2 || bytes.size() - 2 < bytes[1])
            return std::nullopt;
        const auto body = bytes.subspan(2, bytes[1]);
        list.push_back({bytes[0], {body.begin(), body.end()}});
        bytes = bytes.subspan(2 + body.size());
    }
    return list;
}

[[nodiscard]] inline std::vector<std::uint8_t> WritePsiDescriptors(const std::vector<PsiDescriptor>& list) {
    std::vector<std::uint8_t> out{};
    for (const PsiDescriptor& descriptor : list) {
        out.push_back(descriptor.tag);
        out.push_back(static_cast<std::uint8_t>(descriptor.body.size()));
        out.insert(out.end(), descriptor.body.begin(), descriptor.body.end());
    }
    return out;
}

// 2.4.4.8: the elementary streams of one programme.
struct Pmt {
    struct Stream {
        std::uint8_t type = 0;
        std::uint16_t pid = 0;
        std::vector<PsiDescriptor> descriptors;
        bool operator==(const Stream&) const = default;
    };
    std::uint16_t program = 0; // the section's extension
    std::uint16_t pcrPid = 0;
    std::vector<PsiDescriptor> descriptors{};
    std::vector<Stream> streams{};

    [[nodiscard]] static std::optional<Pmt> Parse(const PsiSection& section) {
        std::span<const std::uint8_t> rest = section.body;
        if (section.tableId != kTableIdPmt || rest.size() < 4)
            return std::nullopt;
        Pmt pmt;
        pmt.program = section.extension;
        pmt.pcrPid = static_cast<std::uint16_t>((rest[0] & 0x1F) << 8 | rest[1]);
        auto loop = TakeLoop(rest, 2);
        if (!loop)
            return std::nullopt;
        pmt.descriptors = std::move(*loop);
        while (!rest.empty()) {
            if (rest.size() < 5)
                return std::nullopt;
            Stream stream{rest[0], static_cast<std::uint16_t>((rest[1] & 0x1F) << 8 | rest[2]), {}};
            auto streamLoop = TakeLoop(rest, 3);
            if (!streamLoop)
                return std::nullopt;
            stream.descriptors = std::move(*streamLoop);
            pmt.streams.push_back(std::move(stream));
        }
        return pmt;
    }

    // The body of the section.
    [[nodiscard]] std::vector<std::uint8_t> Write() const {
        std::vector<std::uint8_t> out = {static_cast<std::uint8_t>(0xE0 | pcrPid >> 8),
                                         static_cast<std::uint8_t>(pcrPid & 0xFF)};
        PutLoop(out, descriptors);
        for (const Stream& stream : streams) {
            out.push_back(stream.type);
            out.push_back(static_cast<std::uint8_t>(0xE0 | stream.pid >> 8));
            out.push_back(static_cast<std::uint8_t>(stream.pid & 0xFF));
            PutLoop(out, stream.descriptors);
        }
        return out;
    }

private:
    // Reads the 12-bit length at `at` and the descriptors after it, and moves `rest` behind them.
    [[nodiscard]] static std::optional<std::vector<PsiDescriptor>> TakeLoop(std::span<const std::uint8_t>& rest,
                                                                            std::size_t at) {
        const std::size_t length = static_cast<std::size_t>(rest[at] & 0x0F) << 8 | rest[at + 1];
        if (rest.size() - at - 2 < length)
            return std::nullopt;
        const auto loop = rest.subspan(at + 2, length);
        rest = rest.subspan(at + 2 + length);
        return ParsePsiDescriptors(loop);
    }

    static void PutLoop(std::vector<std::uint8_t>& out, const std::vector<PsiDescriptor>& list) {
        const std::vector<std::uint8_t> bytes = WritePsiDescriptors(list);
        out.push_back(static_cast<std::uint8_t>(0xF0 | (bytes.size() >> 8 & 0x0F)));
        out.push_back(static_cast<std::uint8_t>(bytes.size() & 0xFF));
        out.insert(out.end(), bytes.begin(), bytes.end());
    }
};

} // namespace wire

#include "host/headend/TsMux.h"

#include <algorithm>
#include <array>
#include <deque>
#include <limits>
#include <optional>
#include <utility>

#include "host/headend/AvcStream.h"
#include "host/headend/OuterCoder.h"
#include "host/wire/BitWriter.h"
#include "host/wire/Mpeg4Objects.h"
#include "host/wire/Pes.h"
#include "host/wire/PsiSection.h"
#include "host/wire/SlPacket.h"
#include "host/wire/TsPacket.h"

namespace headend {

namespace {

constexpr std::uint16_t kProgram = 1;
constexpr std::uint16_t kObjectEs = 1;
constexpr std::uint16_t kSceneEs = 2;
constexpr std::uint16_t kAudioEs = 0x101;
constexpr std::uint16_t kVideoEs = 0x201;
constexpr std::int64_t kTablesEvery = 36000; // 0.4 s; TS 102 428 wants them within 0.5 s
constexpr std::int64_t kPcrEvery = 7000;     // 78 ms; within 0.1 s
constexpr std::int64_t kOcrEvery = 45000;
constexpr std::int64_t kClockWrap = std::int64_t{1} << 33;
constexpr std::uint8_t kScramblingEven = 2;

constexpr wire::SlConfig kSlConfig{.useAccessUnitStart = true,
                                   .useAccessUnitEnd = true,
                                   .useTimeStamps = true,
                                   .useIdle = true,
                                   .timeStampResolution = 90000,
                                   .ocrResolution = 90000,
                                   .timeStampLength = 33,
                                   .ocrLength = 33};

std::uint64_t Wrapped(std::int64_t ticks) {
    return static_cast<std::uint64_t>(((ticks % kClockWrap) + kClockWrap) % kClockWrap);
}

// 14496-11 BIFSv2Config: no identifiers, a command stream, the picture's size.
wire::ByteVector SceneConfig(int width, int height) {
    wire::BitWriter bits;
    bits.Write(0, 2);  // no 3D mesh coding, no predictive fields
    bits.Write(0, 15); // node, route and PROTO identifiers of no bits
    bits.Write(1, 1);  // a stream of commands
    bits.Write(3, 2);  // measured in pixels, and the size follows
    bits.Write(static_cast<std::uint32_t>(width), 16);
    bits.Write(static_cast<std::uint32_t>(height), 16);
    bits.AlignToByte();
    return bits.Take();
}

// A scene access unit. Receivers of this profile fill the screen with the one picture, whatever the scene
// says.
constexpr std::array<std::uint8_t, 4> kScene = {0xC0, 0x00, 0x00, 0x00};

wire::EsDescriptor Stream(std::uint16_t esId, std::uint8_t objectType, std::uint8_t streamType,
                          std::uint32_t bufferSize, std::uint32_t bitRate, wire::ByteVector specificInfo) {
    wire::EsDescriptor es;
    es.esId = esId;
    es.decoder = {.objectType = objectType,
                  .streamType = streamType,
                  .bufferSize = bufferSize,
                  .maxBitrate = bitRate,
                  .averageBitrate = bitRate,
                  .specificInfo = std::move(specificInfo)};
    es.sl = kSlConfig;
    return es;
}

// An elementary stream on its way into packets: the units still to send, and the PES packet being cut up.
struct Lane {
    std::uint16_t pid = 0;
    const std::vector<AccessUnit>* units = nullptr;
    std::size_t next = 0;
    wire::ByteVector pes{};
    std::size_t sent = 0; // of pes
    std::uint8_t continuity = 0;
    bool started = false;
    std::int64_t nextStamp = 0;
    std::vector<AccessUnit> both{}; // of two turns
    std::uint32_t noise = 1;        // state of the stand-in for a cipher

    // The units of a turn before this one come first.
    void BeginTurnBefore(std::int64_t turn) {
        both = *units;
        for (AccessUnit& unit : both)
            unit.time -= turn;
        both.insert(both.end(), units->begin(), units->end());
        units = &both;
        nextStamp = -turn;
    }

    [[nodiscard]] bool InPacket() const { return sent < pes.size(); }
    // The presentation time that presses; nothing when there is nothing to send yet.
    [[nodiscard]] std::optional<std::int64_t> Deadline(std::int64_t now) const {
        if (InPacket())
            return (*units)[next - 1].time;
        if (next < units->size() && (*units)[next].time <= now)
            return (*units)[next].time;
        return std::nullopt;
    }
};

class Mux {
public:
    Mux(const TsMuxSettings& muxSettings, const std::vector<AccessUnit>& videoUnits,
        const std::vector<AccessUnit>& soundUnits, const std::vector<SoundStretch>& soundStretches)
        : settings(muxSettings), video{.pid = kVideoPid, .units = &videoUnits}, sound{.pid = kAudioPid,
                                                                                      .units = &soundUnits},
          stretches(soundStretches) {
        if (!settings.parameterSetsInBand && !videoUnits.empty())
            avcConfiguration = MakeAvcConfiguration(videoUnits.front().bytes);
    }

    TsMuxResult Run(std::size_t packetCount) {
        result.packets.resize(packetCount * wire::kTsPacketSize);
        const std::size_t carried = settings.cyclic ? SendTurnBefore(packetCount) : 0;
        for (std::size_t slot = 0; slot < packetCount; ++slot) {
            // 27 MHz; the transport stream's bytes arrive at 188/204 of the sub-channel's rate.
            clock27 = TimeOf(slot);
            now = clock27 / 300;
            out = result.packets.data() + slot * wire::kTsPacketSize;
            Fill();
        }
        result.unsentUnits = static_cast<int>(Unsent()) - static_cast<int>(carried);
        return std::move(result);
    }

private:
    [[nodiscard]] std::int64_t TimeOf(std::size_t slot) const {
        return static_cast<std::int64_t>(slot) * static_cast<std::int64_t>(kCodewordSize) * 8 * 27000 /
               settings.subChannelKbps;
    }
    [[nodiscard]] std::size_t Unsent() const {
        return video.units->size() - video.next + sound.units->size() - sound.next;
    }

    // A whole turn whose packets nobody gets: what is under way at its end is under way at the beginning. Returns how many units are
    // carried over.
    std::size_t SendTurnBefore(std::size_t packetCount) {
        wire::ByteVector nobody(wire::kTsPacketSize);
        out = nobody.data();
        const std::int64_t turn = TimeOf(packetCount);
        const std::size_t units = Unsent();
        for (Lane* lane : {&video, &sound})
            lane->BeginTurnBefore(turn / 300);
        for (std::size_t slot = 0; slot < packetCount; ++slot) {
            clock27 = TimeOf(slot) - turn;
            now = clock27 / 300 - (clock27 % 300 != 0 ? 1 : 0);
            Fill();
        }
        // From here on it is another clock, and each stream says that its counter does not go on.
        nextTables = nextPcr = nextOcr = 0;
        tables.clear();
        tableStarted = {};
        video.started = sound.started = false;
        result.lateUnits = 0;
        return Unsent() - units;
    }

    // What goes into this slot, the most pressing first.
    void Fill() {
        if (now >= nextTables && tables.empty())
            MakeTables();
        const bool pcrDue = now >= nextPcr;
        if (pcrDue) {
            if (sound.Deadline(now))
                return Send(sound);
            return SendClockAlone();
        }
        if (!tables.empty())
            return SendTable();
        const auto videoDeadline = video.Deadline(now);
        const auto soundDeadline = sound.Deadline(now);
        if (soundDeadline && (!videoDeadline || *soundDeadline <= *videoDeadline))
            return Send(sound);
        if (videoDeadline)
            return Send(video);
        wire::WriteNullPacket(Slot());
    }

    [[nodiscard]] std::span<std::uint8_t, wire::kTsPacketSize> Slot() const {
        return std::span<std::uint8_t, wire::kTsPacketSize>(out, wire::kTsPacketSize);
    }

    [[nodiscard]] std::uint64_t Pcr() const {
        return Wrapped(settings.clockStart + now) * 300 + static_cast<std::uint64_t>(clock27 % 300);
    }

    [[nodiscard]] std::uint64_t PresentationTime(std::int64_t time) const {
        return Wrapped(settings.clockStart + time + kPresentationDelay);
    }

    void SendClockAlone() {
        nextPcr = now + kPcrEvery;
        // A packet without payload repeats the counter of the one before it.
        const wire::TsHeader header{.pid = kAudioPid,
                                    .continuity = static_cast<std::uint8_t>((sound.continuity + 15) & 15),
                                    .discontinuity = !sound.started, // and so has the first packet with sound
                                    .pcr = Pcr()};
        wire::WriteTsPacket(Slot(), header, {});
    }

    void Send(Lane& lane) {
        const bool starts = !lane.InPacket();
        if (starts)
            MakePes(lane);
        wire::TsHeader header{.payloadUnitStart = starts, .pid = lane.pid, .continuity = lane.continuity};
        lane.continuity = (lane.continuity + 1) & 15;
        // The stream may be played in a loop, so its first packets announce the break.
        header.discontinuity = !std::exchange(lane.started, true);
        header.randomAccess = starts && lane.pid == kVideoPid && (*lane.units)[lane.next - 1].key;
        if (lane.pid == kAudioPid && now >= nextPcr) {
            header.pcr = Pcr();
            nextPcr = now + kPcrEvery;
        }
        wire::ByteVector scrambled;
        wire::ByteSpan payload = wire::ByteSpan(lane.pes).subspan(lane.sent);
        if (now >= settings.scrambledFrom && now < settings.scrambledTo) {
            header.scrambling = kScramblingEven;
            scrambled.assign(payload.begin(),
                             payload.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(payload.size(), 184)));
            for (std::uint8_t& byte : scrambled) {
                lane.noise = lane.noise * 1664525 + 1013904223;
                byte ^= static_cast<std::uint8_t>(lane.noise >> 24);
            }
            // The cut must stay where the clear packet has it, so nothing but the bytes changes.
            payload = scrambled;
        }
        lane.sent += wire::WriteTsPacket(Slot(), header, payload);
        if (!lane.InPacket() && (*lane.units)[lane.next - 1].time + kPresentationDelay < now)
            ++result.lateUnits;
    }

    void MakePes(Lane& lane) {
        const AccessUnit& unit = (*lane.units)[lane.next++];
        wire::SlHeader sl;
        wire::PesHeader pes{.streamId = wire::kStreamIdSlPacketized, .dataAligned = true};
        if (settings.timeStampEveryMs == 0 || unit.time >= lane.nextStamp) {
            sl.compositionTime = PresentationTime(unit.time);
            lane.nextStamp = unit.time + settings.timeStampEveryMs * std::int64_t{90};
        }
        if (lane.pid == kAudioPid && now >= nextOcr) {
            // The clock reference of the sync layer, and with it a presentation time in the PES header.
            sl.clockReference = Wrapped(settings.clockStart + now);
            sl.compositionTime = PresentationTime(unit.time);
            pes.pts = sl.compositionTime;
            nextOcr = now + kOcrEvery;
        }
        wire::ByteVector payload = sl.Write(kSlConfig);
        if (lane.pid == kVideoPid && !avcConfiguration.empty())
            wire::AppendBytes(payload, ToLengthPrefixed(unit.bytes));
        else
            wire::AppendBytes(payload, unit.bytes);
        lane.pes = pes.Write(payload.size());
        wire::AppendBytes(lane.pes, payload);
        lane.sent = 0;
    }

    void SendTable() {
        const TablePiece piece = std::move(tables.front());
        tables.pop_front();
        const std::size_t index = TableIndex(piece.pid);
        const wire::TsHeader header{.payloadUnitStart = piece.starts,
                                    .pid = piece.pid,
                                    .continuity = tableContinuity[index],
                                    .discontinuity = !std::exchange(tableStarted[index], true)};
        tableContinuity[index] = (tableContinuity[index] + 1) & 15;
        wire::WriteTsPacket(Slot(), header, piece.bytes);
    }

    static std::size_t TableIndex(std::uint16_t pid) {
        return pid == wire::kPatPid ? 0 : (pid == kMapPid ? 1 : (pid == kObjectPid ? 2 : 3));
    }

    void MakeTables() {
        nextTables = now + kTablesEvery;
        Queue(wire::kPatPid, {.tableId = wire::kTableIdPat, .extension = 1}, wire::Pat{{{kProgram, kMapPid}}}.Write());
        Queue(kMapPid, {.tableId = wire::kTableIdPmt, .extension = kProgram}, ProgramMap().Write());

        // The stretch whose first sound is the next to be sent decides what the object descriptors say.
        std::size_t current = 0;
        while (current + 1 < stretches.size() && stretches[current + 1].from <= now)
            ++current;
        wire::SlHeader sl;
        sl.compositionTime = PresentationTime(now);
        wire::ByteVector unit = sl.Write(kSlConfig);
        if (!stretches.empty())
            wire::AppendBytes(unit, Objects(stretches[current]).Write());
        Queue(kObjectPid,
              {.tableId = wire::kTableIdObjectDescriptors,
               .extension = kObjectEs,
               .version = static_cast<std::uint8_t>(current & 0x1F)},
              unit);

        unit = sl.Write(kSlConfig);
        wire::AppendBytes(unit, kScene);
        Queue(kScenePid, {.tableId = wire::kTableIdScene, .extension = kSceneEs}, unit);
    }

    void Queue(std::uint16_t pid, wire::PsiSection section, wire::ByteSpan body) {
        section.body = body;
        wire::ByteVector bytes = {0}; // pointer_field: the section begins at once
        wire::AppendBytes(bytes, section.Write());
        for (std::size_t at = 0; at < bytes.size(); at += kTablePiece) {
            const auto piece = wire::ByteSpan(bytes).subspan(at, std::min(kTablePiece, bytes.size() - at));
            tables.push_back({pid, at == 0, {piece.begin(), piece.end()}});
        }
    }

    [[nodiscard]] wire::Pmt ProgramMap() const {
        wire::IodDescriptor iod{.label = 1,
                                .id = 1,
                                .objectProfile = 0x01,
                                .sceneProfile = 0x0C,
                                .audioProfile = 0xFE,
                                .visualProfile = 0xFE,
                                .graphicsProfile = 0x04};
        iod.streams = {Stream(kObjectEs, wire::kObjectTypeSystems1, wire::kStreamObjectDescriptor, 1024, 8000, {}),
                       Stream(kSceneEs, wire::kObjectTypeSystems2, wire::kStreamScene, 1024, 8000,
                              SceneConfig(settings.width, settings.height))};
        const auto sl = [](std::uint16_t esId) {
            return std::vector<wire::PsiDescriptor>{
                {wire::kPsiTagSl, {static_cast<std::uint8_t>(esId >> 8), static_cast<std::uint8_t>(esId & 0xFF)}}};
        };
        wire::Pmt pmt{.program = kProgram, .pcrPid = kAudioPid};
        pmt.descriptors = {{wire::kPsiTagIod, iod.Write()}};
        pmt.streams = {{wire::kStreamTypeSlSections, kObjectPid, sl(kObjectEs)},
                       {wire::kStreamTypeSlSections, kScenePid, sl(kSceneEs)},
                       {wire::kStreamTypeSlPes, kVideoPid, sl(kVideoEs)},
                       {wire::kStreamTypeSlPes, kAudioPid, sl(kAudioEs)}};
        return pmt;
    }

    [[nodiscard]] wire::ObjectDescriptorUpdate Objects(const SoundStretch& stretch) const {
        wire::EsDescriptor picture = Stream(kVideoEs, wire::kObjectTypeH264, wire::kStreamVisual, 60000,
                                            settings.videoBitRate, avcConfiguration);
        picture.clockEsId = kAudioEs;
        wire::EsDescriptor heard = Stream(kAudioEs, stretch.objectType, wire::kStreamAudio, 6144, stretch.bitRate,
                                          stretch.audioSpecificConfig);
        return {.objects = {{.id = 20, .streams = {picture}}, {.id = 10, .streams = {heard}}}};
    }

    // A part of a section that fits into one packet, also beside an adaptation field with flags.
    struct TablePiece {
        std::uint16_t pid = 0;
        bool starts = false;
        wire::ByteVector bytes{};
    };
    static constexpr std::size_t kTablePiece = 182;

    const TsMuxSettings& settings;
    Lane video;
    Lane sound;
    const std::vector<SoundStretch>& stretches;
    wire::ByteVector avcConfiguration;
    TsMuxResult result;
    std::uint8_t* out = nullptr;
    std::int64_t clock27 = 0;
    std::int64_t now = 0;
    // Also before the first turn all of them are overdue.
    std::int64_t nextTables = std::numeric_limits<std::int64_t>::min();
    std::int64_t nextPcr = nextTables;
    std::int64_t nextOcr = nextTables;
    std::deque<TablePiece> tables;
    std::array<std::uint8_t, 4> tableContinuity{};
    std::array<bool, 4> tableStarted{};
};

} // namespace

TsMuxResult MuxTelevision(const TsMuxSettings& settings, const std::vector<AccessUnit>& video,
                          const std::vector<AccessUnit>& sound, const std::vector<SoundStretch>& stretches,
                          std::size_t packetCount) {
    return Mux(settings, video, sound, stretches).Run(packetCount);
}

} // namespace headend

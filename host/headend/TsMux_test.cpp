#include "host/headend/TsMux.h"

#include <algorithm>
#include <map>

#include <gtest/gtest.h>

#include "host/headend/AvcStream.h"
#include "host/headend/OuterCoder.h"
#include "host/wire/Mpeg4Objects.h"
#include "host/wire/Pes.h"
#include "host/wire/PsiSection.h"
#include "host/wire/SlPacket.h"
#include "host/wire/TsPacket.h"

namespace {

using headend::AccessUnit;
using wire::ByteVector;

constexpr int kKbps = 544;

ByteVector Unit(std::initializer_list<std::uint8_t> head, std::size_t size, int seed) {
    ByteVector bytes(head);
    while (bytes.size() < size)
        bytes.push_back(static_cast<std::uint8_t>(bytes.size() * 31 + static_cast<std::size_t>(seed) * 7 + 5) | 1);
    return bytes;
}

// Ten pictures and sound frames a second with sizes like real ones; the first picture has parameter sets.
struct Material {
    std::vector<AccessUnit> video;
    std::vector<AccessUnit> sound;
    std::vector<headend::SoundStretch> stretches = {
        {.from = 0, .audioSpecificConfig = {0xB1, 0x91, 0x08, 0x00, 0x00}, .bitRate = 60000}};
};

Material MakeMaterial(int seconds) {
    Material material;
    for (int i = 0; i < seconds * 30 - 12; ++i) {
        const bool key = i % 30 == 0;
        ByteVector bytes;
        if (key)
            bytes = {0, 0, 0, 1, 0x67, 0x42, 0xC0, 0x0D, 0x55, 0, 0, 0, 1, 0x68, 0xCE, 0x3C, 0x80};
        const ByteVector slice = Unit({0, 0, 0, 1, static_cast<std::uint8_t>(key ? 0x65 : 0x41)}, key ? 7000 : 1200, i);
        wire::AppendBytes(bytes, slice);
        material.video.push_back({i * std::int64_t{3000}, bytes, key});
    }
    for (int i = 0; i < seconds * 47 - 12; ++i)
        material.sound.push_back({i * std::int64_t{1920}, Unit({}, 160, i), true});
    return material;
}

std::size_t PacketsOf(int seconds) {
    return static_cast<std::size_t>(seconds) * kKbps * 1000 / 8 / headend::kCodewordSize;
}

// Takes the stream apart again with nothing but the wire structures.
struct Taken {
    std::map<std::uint16_t, std::vector<ByteVector>> units; // access units by PID
    std::map<std::uint16_t, std::vector<wire::SlHeader>> headers;
    std::map<std::uint16_t, std::vector<double>> sections; // times
    std::vector<wire::ObjectDescriptorUpdate> objects;
    std::vector<int> objectVersions;
    std::vector<std::pair<double, std::uint64_t>> pcr;
    std::vector<double> arrival; // of video units, their last packet
    wire::Pmt map;
    int scrambled = 0;
    int continuityBreaks = 0;
};

Taken TakeApart(const ByteVector& packets) {
    Taken taken;
    std::map<std::uint16_t, ByteVector> partial;
    std::map<std::uint16_t, int> lastContinuity;
    const auto slConfig = wire::SlConfig{.useAccessUnitStart = true,
                                         .useAccessUnitEnd = true,
                                         .useTimeStamps = true,
                                         .useIdle = true,
                                         .timeStampResolution = 90000,
                                         .ocrResolution = 90000,
                                         .timeStampLength = 33,
                                         .ocrLength = 33};
    for (std::size_t at = 0; at + 188 <= packets.size(); at += 188) {
        const double time = static_cast<double>(at / 188) * 204 * 8 / (kKbps * 1000.0);
        const auto packet = wire::TsPacket::Parse(wire::ByteSpan(packets).subspan(at, 188));
        EXPECT_TRUE(packet);
        if (!packet || packet->header.pid == wire::kNullPid)
            continue;
        const std::uint16_t pid = packet->header.pid;
        taken.scrambled += packet->header.scrambling != 0 ? 1 : 0;
        if (packet->header.pcr)
            taken.pcr.emplace_back(time, *packet->header.pcr);
        if (!packet->hasPayload)
            continue;
        if (lastContinuity.count(pid) != 0 && (lastContinuity[pid] + 1) % 16 != packet->header.continuity)
            ++taken.continuityBreaks;
        lastContinuity[pid] = packet->header.continuity;
        ByteVector& bytes = partial[pid];
        if (packet->header.payloadUnitStart)
            bytes.clear();
        wire::AppendBytes(bytes, packet->payload);
        if (pid == headend::kVideoPid || pid == headend::kAudioPid) {
            const auto pes = wire::PesHeader::Parse(bytes);
            if (!pes || bytes.size() < 6u + pes->packetLength)
                continue;
            EXPECT_EQ(bytes.size(), 6u + pes->packetLength);
            const auto payload = wire::ByteSpan(bytes).subspan(pes->size);
            const auto sl = wire::SlHeader::Parse(payload, slConfig);
            EXPECT_TRUE(sl);
            const auto unit = payload.subspan(sl->size);
            taken.units[pid].emplace_back(unit.begin(), unit.end());
            taken.headers[pid].push_back(*sl);
            if (pid == headend::kVideoPid)
                taken.arrival.push_back(time);
            continue;
        }
        const auto section = wire::ByteSpan(bytes).subspan(1);
        const auto size = wire::PsiSection::SizeOf(section);
        if (!size || section.size() < *size)
            continue;
        const auto parsed = wire::PsiSection::Parse(section.first(*size));
        EXPECT_TRUE(parsed);
        taken.sections[pid].push_back(time);
        if (pid == headend::kMapPid)
            taken.map = *wire::Pmt::Parse(*parsed);
        if (pid == headend::kObjectPid) {
            const auto sl = wire::SlHeader::Parse(parsed->body, slConfig);
            taken.objects.push_back(*wire::ObjectDescriptorUpdate::Parse(parsed->body.subspan(sl->size)));
            taken.objectVersions.push_back(parsed->version);
        }
    }
    return taken;
}

TEST(TsMux, EveryAccessUnitComesOutWhole) {
    const Material material = MakeMaterial(4);
    const auto result = headend::MuxTelevision({.subChannelKbps = kKbps}, material.video, material.sound,
                                               material.stretches, PacketsOf(4));
    EXPECT_EQ(result.packets.size(), PacketsOf(4) * 188);
    EXPECT_EQ(result.lateUnits, 0);
    EXPECT_EQ(result.unsentUnits, 0);
    const Taken taken = TakeApart(result.packets);
    ASSERT_EQ(taken.units.at(headend::kVideoPid).size(), material.video.size());
    for (std::size_t i = 0; i < material.video.size(); ++i)
        ASSERT_EQ(taken.units.at(headend::kVideoPid)[i], material.video[i].bytes) << i;
    ASSERT_EQ(taken.units.at(headend::kAudioPid).size(), material.sound.size());
    for (std::size_t i = 0; i < material.sound.size(); ++i)
        ASSERT_EQ(taken.units.at(headend::kAudioPid)[i], material.sound[i].bytes) << i;
    EXPECT_EQ(taken.continuityBreaks, 0);
    EXPECT_EQ(taken.scrambled, 0);
}

TEST(TsMux, TablesAndClocksComeOftenEnough) {
    const Material material = MakeMaterial(4);
    const auto result = headend::MuxTelevision({.subChannelKbps = kKbps}, material.video, material.sound,
                                               material.stretches, PacketsOf(4));
    const Taken taken = TakeApart(result.packets);
    for (const std::uint16_t pid : {wire::kPatPid, headend::kMapPid, headend::kObjectPid, headend::kScenePid}) {
        const auto& times = taken.sections.at(pid);
        EXPECT_LT(times.front(), 0.1);
        for (std::size_t i = 1; i < times.size(); ++i)
            EXPECT_LE(times[i] - times[i - 1], 0.5) << "PID " << pid;
    }
    ASSERT_GT(taken.pcr.size(), 40u);
    for (std::size_t i = 1; i < taken.pcr.size(); ++i) {
        EXPECT_LE(taken.pcr[i].first - taken.pcr[i - 1].first, 0.1);
        EXPECT_NEAR(static_cast<double>(taken.pcr[i].second) / 27e6, taken.pcr[i].first, 1e-6);
    }
    for (std::size_t i = 0; i < taken.arrival.size(); ++i) {
        const auto& header = taken.headers.at(headend::kVideoPid)[i];
        EXPECT_LT(taken.arrival[i], static_cast<double>(header.compositionTime.value()) / 90000) << i;
    }
}

TEST(TsMux, DescriptorsLeadFromTheMapToTheStreams) {
    const Material material = MakeMaterial(1);
    const auto result = headend::MuxTelevision({.subChannelKbps = kKbps}, material.video, material.sound,
                                               material.stretches, PacketsOf(1));
    const Taken taken = TakeApart(result.packets);
    EXPECT_EQ(taken.map.pcrPid, headend::kAudioPid);
    ASSERT_EQ(taken.map.descriptors.size(), 1u);
    const auto iod = wire::IodDescriptor::Parse(taken.map.descriptors[0].body);
    ASSERT_TRUE(iod);
    ASSERT_EQ(iod->streams.size(), 2u);
    EXPECT_EQ(iod->streams[0].decoder.streamType, wire::kStreamObjectDescriptor);
    EXPECT_EQ(iod->streams[1].decoder.streamType, wire::kStreamScene);
    ASSERT_EQ(taken.map.streams.size(), 4u);
    ASSERT_FALSE(taken.objects.empty());
    ASSERT_EQ(taken.objects[0].objects.size(), 2u);
    const auto& picture = taken.objects[0].objects[0].streams.at(0);
    EXPECT_EQ(picture.decoder.objectType, wire::kObjectTypeH264);
    EXPECT_TRUE(picture.decoder.specificInfo.empty()) << "parameter sets are in band";
    const auto& sound = taken.objects[0].objects[1].streams.at(0);
    EXPECT_EQ(sound.decoder.specificInfo, material.stretches[0].audioSpecificConfig);
    EXPECT_EQ(picture.clockEsId, sound.esId);
}

TEST(TsMux, AvcConfigurationReplacesParameterSetsInBand) {
    const Material material = MakeMaterial(1);
    const auto result = headend::MuxTelevision({.subChannelKbps = kKbps, .parameterSetsInBand = false}, material.video,
                                               material.sound, material.stretches, PacketsOf(1));
    const Taken taken = TakeApart(result.packets);
    const auto& config = taken.objects.at(0).objects.at(0).streams.at(0).decoder.specificInfo;
    EXPECT_EQ(config, (ByteVector{1,    0x42, 0xC0, 0x0D, 0xFF, 0xE1, 0,    5,    0x67, 0x42,
                                  0xC0, 0x0D, 0x55, 1,    0,    4,    0x68, 0xCE, 0x3C, 0x80}));
    const auto& first = taken.units.at(headend::kVideoPid).at(0);
    EXPECT_EQ(wire::Get32(first, 0), first.size() - 4) << "one unit, its length before it";
    EXPECT_EQ(first[4], 0x65);
}

TEST(TsMux, ClocksWrapAt33Bits) {
    const Material material = MakeMaterial(4);
    const std::int64_t wrap = std::int64_t{1} << 33;
    const auto result = headend::MuxTelevision({.subChannelKbps = kKbps, .clockStart = wrap - 90000}, material.video,
                                               material.sound, material.stretches, PacketsOf(4));
    const Taken taken = TakeApart(result.packets);
    EXPECT_NEAR(static_cast<double>(taken.pcr.front().second) / 300, static_cast<double>(wrap - 90000), 1.0);
    EXPECT_LT(taken.pcr.back().second / 300, 4u * 90000);
    EXPECT_EQ(taken.headers.at(headend::kVideoPid).at(0).compositionTime, static_cast<std::uint64_t>(wrap - 27000));
    EXPECT_EQ(taken.headers.at(headend::kVideoPid).at(30).compositionTime, 63000u);
}

TEST(TsMux, SparseTimeStamps) {
    const Material material = MakeMaterial(3);
    const auto result = headend::MuxTelevision({.subChannelKbps = kKbps, .timeStampEveryMs = 500}, material.video,
                                               material.sound, material.stretches, PacketsOf(3));
    const Taken taken = TakeApart(result.packets);
    int stamped = 0;
    for (const auto& header : taken.headers.at(headend::kVideoPid))
        stamped += header.compositionTime ? 1 : 0;
    EXPECT_GE(stamped, 5);
    EXPECT_LE(stamped, 7);
}

TEST(TsMux, ScrambledWindowIsFlaggedAndUnreadable) {
    const Material material = MakeMaterial(2);
    const headend::TsMuxSettings clear{.subChannelKbps = kKbps};
    headend::TsMuxSettings scrambled = clear;
    scrambled.scrambledFrom = 90000;
    scrambled.scrambledTo = 135000;
    const auto a = headend::MuxTelevision(clear, material.video, material.sound, material.stretches, PacketsOf(2));
    const auto b = headend::MuxTelevision(scrambled, material.video, material.sound, material.stretches, PacketsOf(2));
    int flagged = 0;
    for (std::size_t at = 0; at < a.packets.size(); at += 188) {
        const auto p = wire::TsPacket::Parse(wire::ByteSpan(a.packets).subspan(at, 188));
        const auto q = wire::TsPacket::Parse(wire::ByteSpan(b.packets).subspan(at, 188));
        ASSERT_TRUE(p && q);
        EXPECT_EQ(p->header.pid, q->header.pid);
        const bool differs = !std::equal(p->payload.begin(), p->payload.end(), q->payload.begin(), q->payload.end());
        EXPECT_EQ(differs, q->header.scrambling != 0);
        flagged += q->header.scrambling != 0 ? 1 : 0;
        const bool elementary = p->header.pid == headend::kVideoPid || p->header.pid == headend::kAudioPid;
        EXPECT_TRUE(elementary || q->header.scrambling == 0) << "tables stay in the clear";
    }
    EXPECT_GT(flagged, 100);
}

TEST(TsMux, AFormatChangeBringsNewDescriptorsWithANewVersion) {
    Material material = MakeMaterial(3);
    material.stretches.push_back({.from = 135000, .audioSpecificConfig = {0xB3, 0x09}, .bitRate = 32000});
    const auto result = headend::MuxTelevision({.subChannelKbps = kKbps}, material.video, material.sound,
                                               material.stretches, PacketsOf(3));
    const Taken taken = TakeApart(result.packets);
    EXPECT_EQ(taken.objectVersions.front(), 0);
    EXPECT_EQ(taken.objectVersions.back(), 1);
    EXPECT_EQ(taken.objects.back().objects.at(1).streams.at(0).decoder.specificInfo, (ByteVector{0xB3, 0x09}));
}

// Edge case: a file that starts over
TEST(TsMux, ACyclicStreamBeginsWithWhatItsEndHadNoTimeFor) {
    Material material = MakeMaterial(4);
    material.video.back().bytes.resize(8000, 1); // more than the time that is left for it can carry
    const auto result = headend::MuxTelevision({.subChannelKbps = kKbps, .cyclic = true}, material.video,
                                               material.sound, material.stretches, PacketsOf(4));
    EXPECT_EQ(result.packets.size(), PacketsOf(4) * 188);
    EXPECT_EQ(result.lateUnits, 0);
    EXPECT_EQ(result.unsentUnits, 0);
    ByteVector twice = result.packets;
    wire::AppendBytes(twice, result.packets);
    const Taken taken = TakeApart(twice);
    const auto& units = taken.units.at(headend::kVideoPid);
    const std::size_t count = material.video.size();
    ASSERT_GE(units.size(), 2 * count - 2);
    // From the first whole unit on they follow each other over the seam.
    const auto first = std::find(units.begin(), units.end(), material.video[0].bytes);
    ASSERT_LE(first - units.begin(), 2);
    for (std::size_t i = 0; i < count + 10; ++i)
        ASSERT_EQ(*(first + static_cast<std::ptrdiff_t>(i)), material.video[i % count].bytes) << i;
}

TEST(TsMux, TooMuchForTheRateIsCounted) {
    Material material = MakeMaterial(2);
    for (AccessUnit& unit : material.video)
        unit.bytes.resize(6000, 1);
    const auto result = headend::MuxTelevision({.subChannelKbps = kKbps}, material.video, material.sound,
                                               material.stretches, PacketsOf(2));
    EXPECT_GT(result.lateUnits + result.unsentUnits, 0);
}

TEST(AvcStream, StartCodesOfThreeAndFourBytesAndTrailingZeros) {
    const ByteVector bytes = {0, 0, 1, 0x67, 1, 0, 0, 0, 1, 0x68, 2, 0, 0, 1, 0x65, 3, 0, 0};
    const auto units = headend::SplitByteStream(bytes);
    ASSERT_EQ(units.size(), 3u);
    EXPECT_EQ(units[0].size(), 2u);
    EXPECT_EQ(units[1][0], 0x68);
    EXPECT_EQ(units[2].size(), 2u) << "zeros behind a unit do not belong to it";
    EXPECT_TRUE(headend::SplitByteStream({}).empty());
    EXPECT_TRUE(headend::MakeAvcConfiguration(ByteVector{0, 0, 1, 0x65, 1}).empty());
}

} // namespace

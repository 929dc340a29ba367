#include "host/filters/Demultiplexer.h"
#include "host/filters/PictureDecoder.h"
#include "host/filters/SoundDecoder.h"
#include "tests/filters/TestService.h"
#include "tests/support/OuterData.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

extern "C" {
#include <libavutil/md5.h>
#include <libavutil/mem.h>
}

using namespace filters;
using filters_test::LosePackets;
using filters_test::MakeService;

namespace {

// Keeps all that comes, and decodes it.
class Collector final : public DemuxListener {
public:
    void OnStreams(const VideoFormat* picture, const AudioFormat* sound) override {
        hasVideo = picture != nullptr;
        hasAudio = sound != nullptr;
        if (sound != nullptr && sound->sampleRate > 0) {
            formats.push_back(*sound);
            (void)soundDecoder.SetFormat(*sound);
        }
    }
    void OnVideo(AccessUnit unit) override {
        pictureDecoder.Push(unit, [this](Picture picture) { pictures.push_back(std::move(picture)); });
        unit.bytes.shrink_to_fit();
        video.push_back(std::move(unit));
    }
    void OnAudio(AccessUnit unit) override {
        soundDecoder.Push(unit, [this](const SoundBlock& block) {
            samples.insert(samples.end(), block.samples.begin(), block.samples.end());
            blocks += 1;
            concealed += block.concealed ? 1 : 0;
        });
        audio.push_back(std::move(unit));
    }
    void OnClockLost() override { ++clockLosses; }

    bool hasVideo = false;
    bool hasAudio = false;
    std::vector<AudioFormat> formats;
    std::vector<AccessUnit> video;
    std::vector<AccessUnit> audio;
    std::vector<Picture> pictures;
    std::vector<std::int16_t> samples;
    int blocks = 0;
    int concealed = 0;
    int clockLosses = 0;
    PictureDecoder pictureDecoder;
    SoundDecoder soundDecoder;
};

struct Result {
    Collector collector;
    DemuxCounters counters;
    bool scrambled = false;
};

std::unique_ptr<Result> Demultiplex(const Bytes& bytes) {
    auto result = std::make_unique<Result>();
    Demultiplexer demultiplexer(result->collector);
    PacketSync sync;
    const auto push = [&](ByteSpan packet) {
        demultiplexer.Push(packet);
        result->scrambled |= demultiplexer.IsScrambled();
    };
    for (std::size_t at = 0; at < bytes.size(); at += 5000)
        sync.Push(ByteSpan(bytes).subspan(at, std::min<std::size_t>(5000, bytes.size() - at)), push);
    sync.Finish(push);
    demultiplexer.Finish();
    result->counters = demultiplexer.Counters();
    result->collector.pictureDecoder.Drain(
        [&](Picture picture) { result->collector.pictures.push_back(std::move(picture)); });
    return result;
}

Bytes ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Md5(const Bytes& bytes) {
    std::uint8_t sum[16];
    av_md5_sum(sum, bytes.data(), bytes.size());
    std::string text;
    for (const std::uint8_t byte : sum) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", byte);
        text += pair;
    }
    return text;
}

std::vector<std::string> ReadFrameSums(const std::filesystem::path& path) {
    std::ifstream file(path);
    std::vector<std::string> sums;
    for (std::string line; std::getline(file, line);)
        if (!line.empty() && line[0] != '#')
            sums.push_back(line.substr(line.find_last_of(' ') + 1));
    return sums;
}

int LargestStep(const std::vector<std::int16_t>& samples, int channels) {
    int largest = 0;
    for (std::size_t i = static_cast<std::size_t>(channels); i < samples.size(); ++i)
        largest = std::max(largest, std::abs(samples[i] - samples[i - static_cast<std::size_t>(channels)]));
    return largest;
}

// A service of four seconds, made once.
const filters_test::Service& Plain() {
    static const auto service = MakeService({});
    return service;
}

const Result& PlainResult() {
    static const auto result = Demultiplex(Plain().packets);
    return *result;
}

void ExpectSameUnits(const Collector& got) {
    const Collector& wanted = PlainResult().collector;
    ASSERT_EQ(got.video.size(), wanted.video.size());
    ASSERT_EQ(got.pictures.size(), wanted.pictures.size());
    for (std::size_t i = 0; i < wanted.pictures.size(); ++i) {
        ASSERT_EQ(got.pictures[i].i420, wanted.pictures[i].i420) << i;
        ASSERT_EQ(got.pictures[i].time - got.pictures[0].time, wanted.pictures[i].time - wanted.pictures[0].time) << i;
    }
    ASSERT_EQ(got.audio.size(), wanted.audio.size());
    for (std::size_t i = 0; i < wanted.audio.size(); ++i) {
        ASSERT_EQ(got.audio[i].bytes, wanted.audio[i].bytes) << i;
        ASSERT_EQ(got.audio[i].time - got.video[0].time, wanted.audio[i].time - wanted.video[0].time) << i;
    }
}

} // namespace

TEST(Demultiplexer, GivesEveryUnitOfAService) {
    const Result& result = PlainResult();
    EXPECT_EQ(static_cast<int>(result.collector.video.size()), Plain().pictures);
    EXPECT_EQ(static_cast<int>(result.collector.pictures.size()), Plain().pictures);
    EXPECT_EQ(static_cast<int>(result.collector.audio.size()), Plain().soundUnits);
    EXPECT_EQ(result.collector.concealed, 0);
    EXPECT_EQ(result.counters.gaps, 0u);
    EXPECT_EQ(result.collector.pictures[1].time - result.collector.pictures[0].time, 6000);
    EXPECT_EQ(result.collector.video[0].time, result.collector.audio[0].time);
    EXPECT_NEAR(static_cast<double>(result.collector.video[0].lead), 63000, 9000);
}

TEST(Demultiplexer, ReadsParameterSetsOutOfTheDescriptor) {
    filters_test::ServiceWish wish;
    wish.mux.parameterSetsInBand = false;
    const auto result = Demultiplex(MakeService(wish).packets);
    ASSERT_EQ(result->collector.pictures.size(), PlainResult().collector.pictures.size());
    for (std::size_t i = 0; i < result->collector.pictures.size(); ++i)
        ASSERT_EQ(result->collector.pictures[i].i420, PlainResult().collector.pictures[i].i420) << i;
}

TEST(Demultiplexer, GivesUnitsWithoutTimeStampsTheirTime) {
    filters_test::ServiceWish wish;
    wish.mux.timeStampEveryMs = 700;
    const auto result = Demultiplex(MakeService(wish).packets);
    ASSERT_EQ(result->collector.video.size(), PlainResult().collector.video.size());
    // The first units go by what is usual; from the second stamp on the picture's own rate is known.
    for (std::size_t i = 0; i < result->collector.video.size(); ++i)
        ASSERT_NEAR(static_cast<double>(result->collector.video[i].time),
                    static_cast<double>(PlainResult().collector.video[i].time), i < 12 ? 45000 : 2)
            << i;
    for (std::size_t i = 0; i < result->collector.audio.size(); ++i)
        ASSERT_NEAR(static_cast<double>(result->collector.audio[i].time),
                    static_cast<double>(PlainResult().collector.audio[i].time), 2)
            << i;
}

TEST(Demultiplexer, FollowsTheClockOverItsWrap) {
    filters_test::ServiceWish wish;
    wish.mux.clockStart = (std::int64_t{1} << 33) - 2 * 90000;
    const auto result = Demultiplex(MakeService(wish).packets);
    ExpectSameUnits(result->collector);
    EXPECT_EQ(result->counters.clockJumps, 0u);
}

TEST(Demultiplexer, TakesAFileOf204BytesThatStartsAnywhere) {
    Bytes bytes(77, 0x11);
    for (std::size_t at = 0; at < Plain().packets.size(); at += 188) {
        bytes.insert(bytes.end(), Plain().packets.begin() + static_cast<std::ptrdiff_t>(at),
                     Plain().packets.begin() + static_cast<std::ptrdiff_t>(at + 188));
        bytes.insert(bytes.end(), 16, 0x47);
    }
    ExpectSameUnits(Demultiplex(bytes)->collector);
}

TEST(Demultiplexer, PlaysWhatCameBeforeTheFirstTables) {
    // The first round of tables is missing; the next one comes within half a second.
    Bytes packets;
    for (std::size_t i = 0; i < Plain().Count(); ++i) {
        const auto* packet = &Plain().packets[i * 188];
        const int pid = (packet[1] & 0x1F) << 8 | packet[2];
        const bool table =
            pid == 0 || pid == headend::kMapPid || pid == headend::kObjectPid || pid == headend::kScenePid;
        if (i < 60 && table)
            continue;
        packets.insert(packets.end(), packet, packet + 188);
    }
    ASSERT_LT(packets.size(), Plain().packets.size());
    ExpectSameUnits(Demultiplex(packets)->collector);
}

TEST(Demultiplexer, LossFreezesThePictureUntilTheNextRandomAccess) {
    // One packet of the picture is missing about a second and a half from the beginning.
    Bytes packets = Plain().packets;
    std::size_t victim = static_cast<std::size_t>(1.5 * Plain().packetsPerSecond) * 188;
    while (((packets[victim + 1] & 0x1F) << 8 | packets[victim + 2]) != headend::kVideoPid)
        victim += 188;
    packets.erase(packets.begin() + static_cast<std::ptrdiff_t>(victim),
                  packets.begin() + static_cast<std::ptrdiff_t>(victim + 188));
    const auto result = Demultiplex(packets);
    EXPECT_EQ(result->counters.gaps, 1u);
    const auto& all = PlainResult().collector.pictures;
    std::size_t next = 0;
    std::size_t missing = 0;
    for (const Picture& picture : result->collector.pictures) {
        while (next < all.size() && all[next].time != picture.time) {
            ++next;
            ++missing;
        }
        ASSERT_LT(next, all.size());
        ASSERT_EQ(picture.i420, all[next].i420);
        ++next;
    }
    EXPECT_GE(missing, 1u);
    EXPECT_LE(missing, 15u); // an IDR picture comes every second
    EXPECT_EQ(next, all.size());
}

TEST(Demultiplexer, FivePercentLossMakesNoStepAndNoFalsePicture) {
    const int intact = LargestStep(PlainResult().collector.samples, 2);
    const auto& all = PlainResult().collector.pictures;
    for (unsigned seed = 1; seed <= 5; ++seed) {
        const auto result = Demultiplex(LosePackets(Plain().packets, 0.05, seed, 0.1, 0.6));
        EXPECT_GT(result->counters.gaps, 10u);
        EXPECT_LE(LargestStep(result->collector.samples, 2), intact) << seed;
        // No false picture: each one equals the intact one of its time.
        for (const Picture& picture : result->collector.pictures) {
            const auto same = std::ranges::find(all, picture.time, &Picture::time);
            ASSERT_NE(same, all.end());
            ASSERT_EQ(picture.i420, same->i420);
        }
        // Back within one random access interval after the loss, and then all of them.
        const auto back = std::ranges::find_if(result->collector.pictures, [&](const Picture& picture) {
            return picture.time - all.front().time > static_cast<Ticks>((0.6 * 4.5 + 1.0) * 90000);
        });
        const auto wanted = std::ranges::find(all, back->time, &Picture::time);
        EXPECT_EQ(result->collector.pictures.end() - back, all.end() - wanted) << seed;
        // What was lost was replaced in full length.
        EXPECT_NEAR(result->collector.blocks, PlainResult().collector.blocks, 2) << seed;
    }
}

TEST(Demultiplexer, AnnouncesAnotherSound) {
    const auto result = Demultiplex(MakeService({.seconds = 5, .changeAt = 2.5}).packets);
    ASSERT_GE(result->collector.formats.size(), 2u);
    EXPECT_EQ(result->collector.formats.front().sampleRate, 48000);
    EXPECT_EQ(result->collector.formats.front().channels, 2);
    EXPECT_EQ(result->collector.formats.back().sampleRate, 24000);
    EXPECT_EQ(result->collector.formats.back().channels, 1);
}

TEST(Demultiplexer, TellsThatAServiceIsScrambled) {
    filters_test::ServiceWish wish;
    wish.mux.scrambledFrom = 90000;
    wish.mux.scrambledTo = 2 * 90000;
    const auto result = Demultiplex(MakeService(wish).packets);
    EXPECT_TRUE(result->scrambled);
    EXPECT_GT(result->counters.scrambledPackets, 50u);
    EXPECT_LT(result->collector.pictures.size(), PlainResult().collector.pictures.size());
    for (const Picture& picture : result->collector.pictures) {
        const auto& all = PlainResult().collector.pictures;
        const auto same = std::ranges::find(all, picture.time, &Picture::time);
        ASSERT_NE(same, all.end());
        ASSERT_EQ(picture.i420, same->i420);
    }
}

TEST(Demultiplexer, GoesOnWhenTheTransmitterStartsOver) {
    Bytes twice = Plain().packets;
    twice.insert(twice.end(), Plain().packets.begin(), Plain().packets.end());
    const auto result = Demultiplex(twice);
    EXPECT_EQ(result->collector.pictures.size(), 2 * PlainResult().collector.pictures.size());
    EXPECT_EQ(result->counters.clockJumps, 1u);
    EXPECT_EQ(result->collector.clockLosses, 0);
    for (std::size_t i = 1; i < result->collector.video.size(); ++i)
        ASSERT_GT(result->collector.video[i].time, result->collector.video[i - 1].time) << i;
}

TEST(Demultiplexer, GivesUpAClockThatNeverRests) {
    Bytes packets;
    for (int i = 0; i < 8; ++i)
        packets.insert(packets.end(), Plain().packets.begin(),
                       Plain().packets.begin() + static_cast<std::ptrdiff_t>(150 * 188));
    EXPECT_GE(Demultiplex(packets)->collector.clockLosses, 1);
}

TEST(Demultiplexer, AServiceOfSoundAloneHasNoPicture) {
    const auto result = Demultiplex(MakeService({.withPictures = false}).packets);
    EXPECT_EQ(result->collector.video.size(), 0u);
    EXPECT_GT(result->collector.audio.size(), 150u);
}

// --- against references

namespace {

void ExpectReferencePictures(const std::filesystem::path& stream, const std::filesystem::path& sums) {
    const auto result = Demultiplex(ReadBytes(stream));
    const auto wanted = ReadFrameSums(sums);
    ASSERT_EQ(result->collector.pictures.size(), wanted.size());
    for (std::size_t i = 0; i < wanted.size(); ++i)
        ASSERT_EQ(Md5(result->collector.pictures[i].i420), wanted[i]) << i;
}

} // namespace

TEST(Demultiplexer, PicturesEqualTheReference) {
    DMB_OUTER_DATA(streams, "dmb-ts");
    ExpectReferencePictures(streams / "bsac_annexb.dmb", streams / "video.framemd5");
    ExpectReferencePictures(streams / "aac_annexb.dmb", streams / "video.framemd5");
    ExpectReferencePictures(streams / "tv1.dmb", streams / "tv1.framemd5");
}

TEST(Demultiplexer, SoundEqualsTheReference) {
    DMB_OUTER_DATA(streams, "dmb-ts");
    const auto result = Demultiplex(ReadBytes(streams / "bsac_annexb.dmb"));
    const Bytes wav = ReadBytes(streams / "bsac.ref.wav");
    const auto& samples = result->collector.samples;
    ASSERT_EQ(samples.size(), 188u * 2048);
    double sum = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::size_t at = 44 + 2 * i;
        const int off = samples[i] - static_cast<std::int16_t>(wav[at] | wav[at + 1] << 8);
        ASSERT_LE(std::abs(off), 2) << i;
        sum += off * off;
    }
    EXPECT_LE(std::sqrt(sum / static_cast<double>(samples.size())), 0.5);
}

// Ordinary transport streams of other makers: H.264 with B pictures, AAC in ADTS or LATM, MPEG audio.
#include "tests/filters/ForeignStream.h"
#include "tests/filters/TelevisionWorld.h"

#include <cmath>
#include <numbers>

using namespace filters;
using namespace filters_test;

namespace {

// What the demultiplexer finds, with the sound decoded.
class ForeignListener final : public DemuxListener {
public:
    explicit ForeignListener(ByteSpan packets) {
        Demultiplexer demultiplexer(*this);
        for (std::size_t at = 0; at + 188 <= packets.size(); at += 188)
            demultiplexer.Push(packets.subspan(at, 188));
        demultiplexer.Finish();
        isForeign = demultiplexer.Tables().IsForeign();
    }
    void OnStreams(const VideoFormat*, const AudioFormat* audio) override {
        if (audio != nullptr && audio->sampleRate > 0) {
            formats.push_back(*audio);
            EXPECT_TRUE(decoder.SetFormat(*audio));
        }
    }
    void OnVideo(AccessUnit unit) override { pictures.push_back(unit.time); }
    void OnAudio(AccessUnit unit) override {
        sound.push_back(unit.time);
        decoder.Push(unit, [this](const SoundBlock& block) {
            for (std::size_t i = 0; i < block.samples.size(); i += static_cast<std::size_t>(block.channels))
                left.push_back(block.samples[i]);
            concealed += block.concealed ? 1 : 0;
        });
    }
    void OnClockLost() override { ADD_FAILURE() << "the clock was lost"; }

    // How strongly a tone sounds in the middle second, as an amplitude.
    [[nodiscard]] double Amplitude(double hertz, int sampleRate) const {
        double real = 0;
        double imaginary = 0;
        const auto count = static_cast<std::size_t>(sampleRate);
        for (std::size_t i = 0; i < count; ++i) {
            const double angle = 2 * std::numbers::pi * hertz * static_cast<double>(i) / sampleRate;
            real += left[count + i] * std::cos(angle);
            imaginary += left[count + i] * std::sin(angle);
        }
        return 2 * std::hypot(real, imaginary) / sampleRate;
    }

    std::vector<AudioFormat> formats;
    std::vector<Ticks> pictures;
    std::vector<Ticks> sound;
    std::vector<std::int16_t> left;
    int concealed = 0;
    bool isForeign = false;
    SoundDecoder decoder;
};

struct Kind {
    const char* name;
    ForeignSound sound;
    int sampleRate;
    AudioCodec codec;
    int samples;
};
constexpr Kind kKinds[] = {
    {"ADTS", ForeignSound::kAdts, 48000, AudioCodec::kAac, 1024},
    {"ADTS at 44.1 kHz", ForeignSound::kAdts, 44100, AudioCodec::kAac, 1024},
    {"LATM", ForeignSound::kLatm, 48000, AudioCodec::kAac, 1024},
    {"layer II", ForeignSound::kLayerTwo, 48000, AudioCodec::kLayerTwo, 1152},
    {"layer II at 44.1 kHz", ForeignSound::kLayerTwo, 44100, AudioCodec::kLayerTwo, 1152},
    {"layer II at 24 kHz", ForeignSound::kLayerTwo, 24000, AudioCodec::kLayerTwo, 1152},
    {"layer III", ForeignSound::kLayerThree, 48000, AudioCodec::kLayerThree, 1152},
    {"layer III at 22.05 kHz", ForeignSound::kLayerThree, 22050, AudioCodec::kLayerThree, 576},
};

} // namespace

TEST(ForeignStreams, EveryFrameOfSoundIsFoundAndDecoded) {
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        const ForeignStream stream = MakeForeignStream({.sound = kind.sound, .sampleRate = kind.sampleRate});
        const ForeignListener heard(stream.packets);
        ASSERT_EQ(heard.formats.size(), 1u);
        EXPECT_EQ(heard.formats[0].codec, kind.codec);
        EXPECT_EQ(heard.formats[0].sampleRate, kind.sampleRate);
        EXPECT_EQ(heard.formats[0].channels, 2);
        EXPECT_EQ(heard.formats[0].samplesPerUnit, kind.samples);
        EXPECT_EQ(static_cast<int>(heard.pictures.size()), stream.pictures);
        EXPECT_EQ(static_cast<int>(heard.sound.size()), stream.soundFrames);
        // Layer III may lean on a frame before the first.
        EXPECT_LE(heard.concealed, 1);
        for (std::size_t i = 1; i < heard.sound.size(); ++i)
            ASSERT_NEAR(static_cast<double>(heard.sound[i] - heard.sound[i - 1]),
                        kind.samples * 90000.0 / kind.sampleRate, 2)
                << i;
        EXPECT_NEAR(heard.Amplitude(440, kind.sampleRate), 8192, 500); // the encoder of layer III takes 5 % away
        EXPECT_LT(heard.Amplitude(1000, kind.sampleRate), 50);
    }
}

// A synchronisation word by chance may not become another format of sound: the whole graph would be joined anew.
TEST(ForeignStreams, LossMakesNoOtherSound) {
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        const ForeignStream stream =
            MakeForeignStream({.sound = kind.sound, .sampleRate = kind.sampleRate, .seconds = 8});
        for (unsigned seed = 1; seed <= 5; ++seed) {
            const ForeignListener heard(LosePackets(stream.packets, 0.05, seed));
            EXPECT_EQ(heard.formats.size(), 1u);
            EXPECT_GT(static_cast<int>(heard.sound.size()), stream.soundFrames / 3);
        }
    }
}

TEST(ForeignStreams, TheProgrammeStartsAnywhere) {
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        const ForeignStream stream = MakeForeignStream({.sound = kind.sound, .sampleRate = kind.sampleRate});
        const std::size_t third = stream.packets.size() / 188 / 3 * 188;
        const ForeignListener heard(ByteSpan(stream.packets).subspan(third));
        EXPECT_EQ(heard.formats.size(), 1u);
        EXPECT_GT(static_cast<int>(heard.sound.size()), stream.soundFrames / 2);
        EXPECT_GT(static_cast<int>(heard.pictures.size()), stream.pictures / 2);
    }
}

TEST(ForeignStreams, OtherCodecsAreForeign) {
    const ForeignListener heard(MakeForeignStream({.unknownCodecs = true}).packets);
    EXPECT_TRUE(heard.isForeign);
    EXPECT_TRUE(heard.pictures.empty());
}

TEST_F(Television, PlaysOrdinaryTransportStreams) {
    for (const ForeignSound sound : {ForeignSound::kAdts, ForeignSound::kLatm, ForeignSound::kLayerTwo}) {
        const ForeignStream stream = MakeForeignStream({.sound = sound});
        Store("a.ts", stream.packets);
        OpenFile(u"\\SDMMC Card\\a.ts");
        (void)session->control->Run();
        Pass(6000);
        const auto events = session->TakeEvents();
        EXPECT_EQ(events.count(EC_COMPLETE), 1u);
        EXPECT_EQ(events.count(IDMB_EVENT_AUDIO_CHANGE), 0u);
        ExpectLipSync(80);
        // In the order of presentation, each once; the first one twice.
        const auto shown = world.screen.Shown();
        EXPECT_EQ(static_cast<int>(shown.size()), stream.pictures + 1);
        for (std::size_t i = 2; i < shown.size(); ++i)
            EXPECT_EQ(shown[i].picture->time - shown[i - 1].picture->time, 3600) << i;
        CloseSession();
    }
}

TEST_F(Television, AFileOfOtherCodecsSaysSo) {
    Store("a.ts", MakeForeignStream({.unknownCodecs = true}).packets);
    OpenFile(u"\\SDMMC Card\\a.ts");
    (void)session->control->Run();
    Pass(500);
    EXPECT_EQ(world.status.States().back(), ReceptionState::kNoDecoder);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
}

TEST_F(Television, AFileOfSoundAloneSaysSo) {
    Store("a.ts", MakeForeignStream({.sound = ForeignSound::kLayerTwo, .withPictures = false}).packets);
    OpenFile(u"\\SDMMC Card\\a.ts");
    (void)session->control->Run();
    Pass(1000);
    EXPECT_EQ(world.status.States().back(), ReceptionState::kSoundOnly);
    Pass(4000);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
}

TEST_F(Television, PicturesAloneKeepTheirOwnTime) {
    const ForeignStream stream = MakeForeignStream({.seconds = 2, .withSound = false});
    Store("a.ts", stream.packets);
    OpenFile(u"\\SDMMC Card\\a.ts");
    (void)session->control->Run();
    Pass(1500);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 0);
    Pass(1500);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
    const auto shown = world.screen.Shown();
    ASSERT_EQ(static_cast<int>(shown.size()), stream.pictures + 1);
    for (std::size_t i = 3; i < shown.size(); ++i)
        EXPECT_NEAR(static_cast<double>(shown[i].at - shown[i - 1].at), 40, 2) << i;
}

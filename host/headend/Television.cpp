#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "host/headend/Headend.h"
#include "host/headend/Melody.h"
#include "host/headend/Multiplex.h"
#include "host/headend/OuterCoder.h"
#include "host/headend/Programme.h"
#include "host/headend/Scene.h"
#include "host/headend/SoundEncoder.h"
#include "host/headend/TsMux.h"
#include "host/headend/VideoEncoder.h"
#include "host/wire/TsPacket.h"

namespace headend {

namespace {

// The last access units have to be through before the stretch ends, unless it runs into its own beginning.
constexpr double kVideoTail = 0.3;
constexpr double kSoundTail = 0.1;
constexpr double kRounding = 1e-6; // 72 frames of 24 ms are a little less than their sum

std::int64_t Ticks(double seconds) {
    return static_cast<std::int64_t>(seconds * 90000 + 0.5);
}

// What the pictures may have: the stream without packet headers, tables, clock references and the sound with what its
// access units waste in their last packets.
int VideoKbps(const ServiceDescription& service, int kbps) {
    if (service.video.kbps > 0)
        return service.video.kbps;
    const double stream = kbps * 188.0 / 204.0 * 0.97;
    const double wasted = 0.85 * service.video.framesPerSecond + 0.47 * 47;
    return std::max(32, static_cast<int>(stream - service.sound.kbps - wasted - 32));
}

std::vector<AccessUnit> MakePictures(const Description& description, const ServiceDescription& service, double from,
                                     double seconds, int kbps, const std::stop_token& stop) {
    const VideoDescription& video = service.video;
    Scene scene({.kind = video.scene,
                 .width = video.width,
                 .height = video.height,
                 .station = video.station,
                 .ticker = video.ticker,
                 .clockStart = static_cast<int>(description.clock % 86400),
                 .flashEvery = video.flashEvery});
    Canvas canvas(video.width, video.height);
    VideoEncoder encoder({.width = video.width,
                          .height = video.height,
                          .framesPerSecond = video.framesPerSecond,
                          .bitRate = static_cast<std::uint32_t>(kbps) * 1000});
    const int count = static_cast<int>(seconds * video.framesPerSecond + kRounding);
    for (int i = 0; i < count; ++i) {
        if (stop.stop_requested())
            throw Interrupted();
        scene.Draw(canvas, from + static_cast<double>(i) / video.framesPerSecond);
        encoder.Push(canvas.Pixels(), canvas.Stride());
    }
    return encoder.Finish();
}

struct SoundTrack {
    std::vector<AccessUnit> units;
    std::vector<SoundStretch> stretches;
};

// `wholeUnits`: the last one ends before the stretch does.
SoundTrack MakeSound(const ServiceDescription& service, double from, double seconds, bool wholeUnits) {
    SoundTrack track;
    std::vector<SoundChange> changes = {{0, service.sound}};
    changes.insert(changes.end(), service.soundChanges.begin(), service.soundChanges.end());
    const double end = from + seconds;
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const double first = std::max(from, changes[i].at);
        const double last = std::min(end, i + 1 < changes.size() ? changes[i + 1].at : end);
        if (first >= last)
            continue;
        const SoundDescription& sound = changes[i].sound;
        const CodedSound coded = EncodeSound({sound.codec, sound.sampleRate, sound.channels, sound.kbps},
                                             RenderSound({.melody = sound.melody,
                                                          .sampleRate = sound.sampleRate,
                                                          .channels = sound.channels,
                                                          .beepEvery = sound.beepEvery},
                                                         first, last - first));
        const std::int64_t start = Ticks(first - from);
        std::size_t count = coded.units.size();
        if (wholeUnits && last == end)
            count = std::min(
                count, static_cast<std::size_t>((last - first) * sound.sampleRate / kSoundUnitSamples + kRounding));
        track.stretches.push_back({.from = start,
                                   .audioSpecificConfig = coded.audioSpecificConfig,
                                   .bitRate = static_cast<std::uint32_t>(sound.kbps) * 1000});
        for (std::size_t k = 0; k < count; ++k)
            track.units.push_back({start + static_cast<std::int64_t>(k) * kSoundUnitSamples * 90000 / sound.sampleRate,
                                   coded.units[k], true});
    }
    return track;
}

// A foreign stream, over and over until the stretch is full.
TsMuxResult ReadTransportStream(const std::filesystem::path& path, std::size_t packets) {
    std::ifstream file(path, std::ios::binary);
    const wire::ByteVector bytes{std::istreambuf_iterator<char>(file), {}};
    const std::size_t whole = bytes.size() / wire::kTsPacketSize * wire::kTsPacketSize;
    if (whole == 0)
        throw std::runtime_error(path.string() + ": no transport stream packets");
    TsMuxResult result;
    result.packets.resize(packets * wire::kTsPacketSize);
    for (std::size_t at = 0; at < result.packets.size(); ++at)
        result.packets[at] = bytes[at % whole];
    return result;
}

std::size_t PacketCount(const Stretch& stretch) {
    return static_cast<std::size_t>(stretch.frames) * static_cast<std::size_t>(stretch.kbps) * 3 / kCodewordSize;
}

} // namespace

TsMuxResult MakeTransportStream(const Description& description, const ServiceDescription& service,
                                const Stretch& stretch, const std::stop_token& stop) {
    const std::size_t packets = PacketCount(stretch);
    if (!service.transportStream.empty())
        return ReadTransportStream(service.transportStream, packets);

    const double from = stretch.fromFrame * kFrameSeconds;
    const double seconds = stretch.frames * kFrameSeconds;
    const int videoKbps = VideoKbps(service, stretch.kbps);
    const bool cyclic = description.loop && service.soundChanges.empty() && stretch.fromFrame == 0 &&
                        stretch.frames == FrameAt(description.seconds);
    const std::vector<AccessUnit> pictures =
        MakePictures(description, service, from, seconds - (cyclic ? 0 : kVideoTail), videoKbps, stop);
    const SoundTrack sound = MakeSound(service, from, seconds - (cyclic ? 0 : kSoundTail), cyclic);
    const TsMuxSettings settings{.subChannelKbps = stretch.kbps,
                                 .parameterSetsInBand = service.video.parameterSetsInBand,
                                 .videoBitRate = static_cast<std::uint32_t>(videoKbps) * 1000,
                                 .clockStart = service.clockStart + Ticks(from),
                                 .timeStampEveryMs = service.timeStampEveryMs,
                                 .scrambledFrom = Ticks(service.scrambled.from - from),
                                 .scrambledTo = Ticks(service.scrambled.to - from),
                                 .width = service.video.width,
                                 .height = service.video.height,
                                 .cyclic = cyclic};
    return MuxTelevision(settings, pictures, sound.units, sound.stretches, packets);
}

Programme MakeTelevision(const Description& description, const ServiceDescription& service, const Stretch& stretch,
                         const std::stop_token& stop) {
    const TsMuxResult stream = MakeTransportStream(description, service, stretch, stop);
    Programme programme;
    programme.bytes =
        OuterCode(stream.packets, description.loop ? InterleaverStart::kCyclic : InterleaverStart::kZeros);
    // A rest that is no whole codeword, at the very end.
    programme.bytes.resize(static_cast<std::size_t>(stretch.frames) * static_cast<std::size_t>(stretch.kbps) * 3);
    if (stream.lateUnits > 0)
        programme.warnings.push_back(service.label.text + ": " + std::to_string(stream.lateUnits) +
                                     " access units arrive too late; the picture's bit rate is too high");
    return programme;
}

} // namespace headend

#include "tests/filters/TestService.h"

#include "host/headend/Melody.h"
#include "host/headend/SoundEncoder.h"
#include "host/headend/VideoEncoder.h"

#include <algorithm>

namespace filters_test {

namespace {

// A ramp that wanders, and a square that jumps: something in every block, something new in every picture.
void Paint(Bytes& pixels, int width, int height, int number) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            auto* pixel = &pixels[static_cast<std::size_t>((y * width + x) * 4)];
            const bool inSquare = x / 16 == number % (width / 16) && y / 16 == number / 3 % (height / 16);
            pixel[0] = static_cast<std::uint8_t>(inSquare ? 255 : x + number);
            pixel[1] = static_cast<std::uint8_t>(inSquare ? 255 : y + 2 * number);
            pixel[2] = static_cast<std::uint8_t>(inSquare ? 255 : (x + y) / 2);
        }
    }
}

std::vector<headend::AccessUnit> Pictures(const ServiceWish& wish) {
    headend::VideoEncoder encoder({.width = wish.width,
                                   .height = wish.height,
                                   .framesPerSecond = wish.framesPerSecond,
                                   .bitRate = static_cast<std::uint32_t>(wish.kbps) * 500});
    Bytes pixels(static_cast<std::size_t>(wish.width * wish.height * 4));
    const int count = static_cast<int>(wish.seconds * wish.framesPerSecond);
    for (int i = 0; i < count; ++i) {
        Paint(pixels, wish.width, wish.height, i);
        encoder.Push(pixels, static_cast<std::size_t>(wish.width) * 4);
    }
    return encoder.Finish();
}

void AppendSound(const headend::SoundCoding& coding, double from, double to, std::vector<headend::AccessUnit>& units,
                 std::vector<headend::SoundStretch>& stretches) {
    const auto coded = headend::EncodeSound(
        coding,
        headend::RenderSound({.melody = "tone:440/660", .sampleRate = coding.sampleRate, .channels = coding.channels},
                             from, to - from));
    const auto start = static_cast<std::int64_t>(from * 90000);
    stretches.push_back({.from = start,
                         .audioSpecificConfig = coded.audioSpecificConfig,
                         .bitRate = static_cast<std::uint32_t>(coding.kbps) * 1000});
    for (std::size_t k = 0; k < coded.units.size(); ++k)
        units.push_back({start + static_cast<std::int64_t>(k) * headend::kSoundUnitSamples * 90000 / coding.sampleRate,
                         coded.units[k], true});
}

} // namespace

Service MakeService(const ServiceWish& wish) {
    std::vector<headend::AccessUnit> pictures;
    std::vector<headend::AccessUnit> sound;
    std::vector<headend::SoundStretch> stretches;
    if (wish.withPictures)
        pictures = Pictures(wish);
    const double change = wish.changeAt > 0 ? wish.changeAt : wish.seconds;
    AppendSound({.kbps = 64}, 0, change, sound, stretches);
    if (wish.changeAt > 0)
        AppendSound({.sampleRate = wish.changedRate, .channels = wish.changedChannels, .kbps = 32}, change,
                    wish.seconds, sound, stretches);
    headend::TsMuxSettings settings = wish.mux;
    settings.subChannelKbps = wish.kbps;
    settings.videoBitRate = static_cast<std::uint32_t>(wish.kbps) * 500;
    settings.width = wish.width;
    settings.height = wish.height;
    Service service;
    service.packetsPerSecond = wish.kbps * 1000.0 * 188 / 204 / 8 / 188;
    // Half a second more, so that the last units get through.
    const auto count = static_cast<std::size_t>((wish.seconds + 0.5) * service.packetsPerSecond);
    auto muxed = headend::MuxTelevision(settings, pictures, sound, stretches, count);
    service.packets = std::move(muxed.packets);
    service.pictures = static_cast<int>(pictures.size());
    service.soundUnits = static_cast<int>(sound.size());
    return service;
}

Bytes LosePackets(const Bytes& packets, double share, unsigned seed, double fromShare, double toShare) {
    std::minstd_rand random(seed);
    std::uniform_real_distribution<double> draw(0, 1);
    Bytes left;
    const std::size_t count = packets.size() / 188;
    for (std::size_t i = 0; i < count; ++i) {
        const double place = static_cast<double>(i) / static_cast<double>(count);
        if (place >= fromShare && place < toShare && draw(random) < share)
            continue;
        left.insert(left.end(), packets.begin() + static_cast<std::ptrdiff_t>(i * 188),
                    packets.begin() + static_cast<std::ptrdiff_t>(i * 188 + 188));
    }
    return left;
}

} // namespace filters_test

// For tests: ordinary transport streams as other transmitters make them, by FFmpeg's multiplexer and encoders. Nothing of this
// system's own writing side takes part.
#pragma once

#include <cstdint>
#include <vector>

namespace filters_test {

enum class ForeignSound : std::uint8_t { kAdts, kLatm, kLayerTwo, kLayerThree };

struct ForeignWish {
    ForeignSound sound = ForeignSound::kAdts;
    int sampleRate = 48000;
    double seconds = 4;
    int bPictures = 2;
    bool withPictures = true;
    bool withSound = true;
    // Not a codec of this system: MPEG-2 pictures, and sound of Dolby Digital.
    bool unknownCodecs = false;
};

struct ForeignStream {
    std::vector<std::uint8_t> packets;
    int pictures = 0;
    int soundFrames = 0;
};

// 160x120 pictures, 25 a second; a tone of 440 Hz, stereo, at a quarter of full scale.
[[nodiscard]] ForeignStream MakeForeignStream(const ForeignWish& wish);

} // namespace filters_test

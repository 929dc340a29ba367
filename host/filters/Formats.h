// What the two elementary streams of a service are coded in.
#pragma once

#include "host/filters/PacketSync.h"

#include <optional>

namespace filters {

struct VideoFormat {
    // avcC (ISO/IEC 14496-15 5.2.4.1); empty when the parameter sets travel in band.
    Bytes configuration;
    bool operator==(const VideoFormat&) const = default;
};

enum class AudioCodec : std::uint8_t {
    kBsac,       // configuration: AudioSpecificConfig, ISO/IEC 14496-3 1.6.2.1
    kAac,        // likewise; units are raw data blocks
    kLayerTwo,   // no configuration; units are whole frames
    kLayerThree, // likewise
    kUnsupported,
};

struct AudioFormat {
    AudioCodec codec = AudioCodec::kUnsupported;
    Bytes configuration;
    int sampleRate = 0; // Hz, as heard
    int channels = 0;
    // How long one access unit lasts.
    int samplesPerUnit = 1024;
    bool operator==(const AudioFormat&) const = default;

    [[nodiscard]] std::int64_t UnitTicks() const {
        return sampleRate > 0 ? static_cast<std::int64_t>(samplesPerUnit) * 90000 / sampleRate : 0;
    }
};

// What an AudioSpecificConfig describes; codec kUnsupported when there is no decoder for it.
[[nodiscard]] AudioFormat AudioFormatOf(ByteSpan audioSpecificConfig);

// How many bits an AudioSpecificConfig of AAC-LC takes, with or without SBR in front of it; 0 for others, whose length is not known
// here.
[[nodiscard]] std::size_t AacConfigBits(ByteSpan audioSpecificConfig);

} // namespace filters

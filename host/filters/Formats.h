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
    kBsac,     // configuration: AudioSpecificConfig, ISO/IEC 14496-3 1.6.2.1
    kAac,      // likewise; units are raw data blocks
    kLayerTwo, // no configuration; units are whole frames
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

// An ADTS header (14496-3 1.A.3.2): how long header and frame are, and the format as an AudioSpecificConfig.
struct AdtsHeader {
    std::size_t headerBytes = 0;
    std::size_t frameBytes = 0; // header included
    Bytes configuration;
    // Nothing when the bytes do not begin with a header.
    [[nodiscard]] static std::optional<AdtsHeader> Parse(ByteSpan bytes);
};

} // namespace filters

// The transport stream of a T-DMB television service (TS 102 428): programme tables with an initial object
// descriptor, object descriptors and scene in sections, picture and sound as sync layer packets in PES, at a
// constant rate.
#pragma once

#include <cstdint>
#include <vector>

#include "host/wire/Bytes.h"

namespace headend {

// One coded picture or sound frame. Pictures come as a byte stream with start codes.
struct AccessUnit {
    std::int64_t time = 0; // 90 kHz ticks since the stream's beginning, when it is to be presented
    wire::ByteVector bytes;
    bool key = false;
};

// The sound of a stretch of the service; a second stretch makes a format change.
struct SoundStretch {
    std::int64_t from = 0;                // 90 kHz ticks
    std::uint8_t objectType = 0x40;       // MPEG-4 audio
    wire::ByteVector audioSpecificConfig; // 14496-3 1.6.2.1
    std::uint32_t bitRate = 0;            // bit/s
};

struct TsMuxSettings {
    int subChannelKbps = 544;        // of which 188/204 is the transport stream
    bool parameterSetsInBand = true; // else as avcC in the object descriptor, with length-prefixed units
    std::uint32_t videoBitRate = 0;  // bit/s, for the descriptors
    std::int64_t clockStart = 0;     // 90 kHz ticks of the first packet's PCR; wraps at 2^33
    int timeStampEveryMs = 0;        // 0 = every access unit has a composition time
    // Ticks since the beginning between which packets of picture and sound are scrambled; equal = never.
    std::int64_t scrambledFrom = 0;
    std::int64_t scrambledTo = 0;
    int width = 320;
    int height = 240;
    // The stream is played over and over: it begins with what its end had no time to send, so that it may have units up to its last
    // moment.
    bool cyclic = false;
};

// From a packet's arrival to the presentation of what it carries; the receiver's buffer in ticks of 90 kHz.
inline constexpr std::int64_t kPresentationDelay = 63000;

inline constexpr std::uint16_t kMapPid = 0x100;
inline constexpr std::uint16_t kObjectPid = 0x111;
inline constexpr std::uint16_t kScenePid = 0x112;
inline constexpr std::uint16_t kVideoPid = 0x113;
inline constexpr std::uint16_t kAudioPid = 0x114; // carries the PCR

// Exactly `packetCount` packets. Access units that do not find room before the end are left out, or, of a cyclic stream, stand at its
// beginning; units that would come too late to be shown are counted.
struct TsMuxResult {
    wire::ByteVector packets;
    int lateUnits = 0;
    int unsentUnits = 0;
};

[[nodiscard]] TsMuxResult MuxTelevision(const TsMuxSettings& settings, const std::vector<AccessUnit>& video,
                                        const std::vector<AccessUnit>& sound,
                                        const std::vector<SoundStretch>& stretches, std::size_t packetCount);

} // namespace headend

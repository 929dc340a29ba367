// Access units of H.264 (ISO/IEC 14496-10) in their two framings: a byte stream with start codes (annex B), or units
// behind their lengths with the parameter sets aside (14496-15).
#pragma once

#include "host/filters/PacketSync.h"

#include <optional>

namespace filters {

// AVCDecoderConfigurationRecord, 14496-15 5.2.4.1.
struct AvcConfiguration {
    unsigned lengthBytes = 4; // 1..4, of each unit's length
    Bytes parameterSets;      // as a byte stream with start codes
    // Nothing when the record is damaged.
    [[nodiscard]] static std::optional<AvcConfiguration> Parse(ByteSpan record);
};

struct AvcUnitInfo {
    bool hasSlice = false;
    bool randomAccess = false; // an IDR picture or a recovery point: decoding may begin here
    bool hasParameterSets = false;
};

// Looks through an access unit in the byte stream format.
[[nodiscard]] AvcUnitInfo InspectAvcUnit(ByteSpan byteStream);

// The unit as a byte stream, whichever framing it has; nothing when it has neither. `configuration` may be null. A random
// access point without parameter sets of its own gets those of the configuration.
[[nodiscard]] std::optional<Bytes> ToByteStream(ByteSpan unit, const AvcConfiguration* configuration);

// Where access units begin in a byte stream that may hold several: at each access unit delimiter. Always begins with 0.
[[nodiscard]] std::vector<std::size_t> AvcUnitStarts(ByteSpan byteStream);

} // namespace filters

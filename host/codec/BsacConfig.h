// AudioSpecificConfig of an ER BSAC stream (ISO/IEC 14496-3, 1.6.2.1 and 4.4.1): object type 22, 1024-sample
// frames, epConfig 0.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/codec/BsacTables.h"

namespace codec {

struct BsacConfig {
    const RateTables* rate = nullptr; // never null in a parsed configuration
    unsigned channels = 1;            // 1 or 2
    unsigned subFrames = 1;           // blocks an access unit is meant to hold, 1..31
    unsigned layerLength = 0;         // average bytes of a large-step layer, 0..2047; only for several streams per unit

    [[nodiscard]] unsigned SampleRate() const { return rate->rate; }
};

// Nothing when the bytes are no configuration, or one this decoder has no rules for: another object type, an
// explicit or an undefined sampling rate, more than two channels, a core coder, 960-sample frames, error
// protection. A numOfSubFrame of 0 counts as 1.
[[nodiscard]] std::optional<BsacConfig> ParseBsacConfig(std::span<const std::uint8_t> bytes);

[[nodiscard]] std::vector<std::uint8_t> WriteBsacConfig(const BsacConfig& config);

} // namespace codec

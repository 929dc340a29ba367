// The sound of television services: BSAC as T-DMB has it, or AAC as its European sibling.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "host/wire/Bytes.h"

namespace headend {

struct SoundCoding {
    std::string codec = "bsac"; // or "aac"
    int sampleRate = 48000;     // 24000, 44100 or 48000
    int channels = 2;           // 1 or 2
    int kbps = 64;
};

// Access units without gaps; unit k presents samples k * 1024 and on of what was encoded.
struct CodedSound {
    wire::ByteVector audioSpecificConfig; // ISO/IEC 14496-3 1.6.2.1
    std::vector<wire::ByteVector> units;
};

inline constexpr int kSoundUnitSamples = 1024;

// Samples are interleaved, -1..1. Throws std::runtime_error when the encoder cannot be had.
[[nodiscard]] CodedSound EncodeSound(const SoundCoding& coding, std::span<const float> samples);

} // namespace headend

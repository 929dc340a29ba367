// Encodes samples as ER BSAC, one block an access unit, at a constant rate: for the test transmitter.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "host/codec/BsacConfig.h"

namespace codec {

struct BsacEncoderSettings {
    unsigned sampleRate = 48000;    // 24000, 44100 or 48000 Hz
    unsigned channels = 2;          // 1 or 2
    unsigned bitsPerSecond = 96000; // 32000..128000
};

[[nodiscard]] bool IsSupported(const BsacEncoderSettings& settings);

class BsacEncoder {
public:
    // The settings must be supported. Throws std::bad_alloc.
    explicit BsacEncoder(const BsacEncoderSettings& settings);
    ~BsacEncoder();
    BsacEncoder(const BsacEncoder&) = delete;
    BsacEncoder& operator=(const BsacEncoder&) = delete;

    // What a decoder is to be configured with; WriteBsacConfig makes the bytes.
    [[nodiscard]] const BsacConfig& Config() const;

    // The next access unit, for 1024 interleaved samples of each channel. Decoding unit after unit gives the
    // same samples kDelaySamples later, so two more blocks of zeros bring out the end.
    [[nodiscard]] std::vector<std::uint8_t> Encode(std::span<const std::int16_t> interleaved);

    // One block for the overlap of the windows, one to see attacks coming.
    static constexpr unsigned kDelaySamples = 2048;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace codec

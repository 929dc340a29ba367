// Decodes the sound of digital multimedia broadcasting: ER BSAC (ISO/IEC 14496-3, object type 22).
//
// The room in the order of the data, one file pair a stage:
//
//   BsacConfig            AudioSpecificConfig
//   BsacDecoder           access unit -> blocks, concealment of bad ones
//   BlockHeader           fixed-width fields
//   LayerGeometry         lines, bands and bit budget of each layer
//   ArithmeticDecoder     bits -> symbols
//   LayerLoop             layer after layer, as far as the budget goes
//     SideInformation     ... coding bands, scalefactors, flags
//     BitPlanes           ... quantised lines
//   Reconstruction        dequantisation, M/S, noise, intensity; TemporalNoiseShaping
//   FilterBank            spectra -> samples
//   BsacTables            all numbers
//
// and for the other direction ArithmeticEncoder, BlockEncoder (one block from its fields) and BsacEncoder
// (samples in).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "host/codec/BsacConfig.h"
#include "host/codec/BsacStatus.h"

namespace codec {

inline constexpr unsigned kSamplesPerBlock = 1024;

struct BsacBlock {
    BsacStatus status;
    // kSamplesPerBlock samples of each channel, interleaved; valid until the next call of the decoder.
    std::span<const std::int16_t> samples;
};

// One stream of one configuration. After the constructor nothing allocates. Not for use by two threads at
// once.
class BsacDecoder {
public:
    // The configuration comes from ParseBsacConfig. Throws std::bad_alloc.
    explicit BsacDecoder(const BsacConfig& config);
    ~BsacDecoder();
    BsacDecoder(const BsacDecoder&) = delete;
    BsacDecoder& operator=(const BsacDecoder&) = delete;

    // Takes one access unit, any bytes; they must stay valid until Next() has returned nothing. What was left
    // of the unit before is dropped. An empty unit stands for a lost one and makes config.subFrames faded
    // blocks.
    void Push(std::span<const std::uint8_t> accessUnit);

    // The next block of the unit, or nothing when all are out. A block that cannot be decoded is replaced by
    // the last good one, fading to silence within ten blocks; when its length is wrong, the rest of the unit
    // is given up and counted out up to config.subFrames blocks. Every unit makes at least one block and at
    // most kMaxBlocksPerUnit.
    [[nodiscard]] std::optional<BsacBlock> Next();

    // Forgets unit and history: the next block is decoded as the first of a stream.
    void Flush();

    [[nodiscard]] const BsacConfig& Config() const;

    static constexpr unsigned kMaxBlocksPerUnit = 31; // of numOfSubFrame; more blocks in a unit are dropped

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace codec

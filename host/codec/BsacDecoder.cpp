#include "host/codec/BsacDecoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

#include "host/codec/ArithmeticDecoder.h"
#include "host/codec/BitPlanes.h"
#include "host/codec/BlockHeader.h"
#include "host/codec/FilterBank.h"
#include "host/codec/LayerGeometry.h"
#include "host/codec/LayerLoop.h"
#include "host/codec/Reconstruction.h"
#include "host/codec/SideInformation.h"
#include "host/codec/Wide.h"
#include "host/wire/BitReader.h"

namespace codec {

namespace {

constexpr float kFade = 0.7F; // for each block in a row that is missing
constexpr unsigned kBlocksToSilence = 10;

// To the nearest 16-bit number, ties to even, in the lower half; `sample` is finite.
[[gnu::always_inline]] inline std::uint32_t Round(float sample) {
    // Adding 1.5 * 2^23 leaves the rounded number in the lower bits of the significand. These comparisons are the ones
    // that vector instructions make.
    const float above = sample > -32768.0F ? sample : -32768.0F;
    const float limited = above < 32767.0F ? above : 32767.0F;
    return std::bit_cast<std::uint32_t>(limited + 12582912.0F) & 0xFFFF;
}

using Channel = std::span<const float, kBlockSamples>;

[[gnu::always_inline]] inline void InterleaveAsIs(Channel left, Channel right, std::int16_t* samples) {
    static_assert(std::endian::native == std::endian::little, "the left sample comes first");
    std::array<std::uint32_t, kBlockSamples> pairs;
    for (std::size_t n = 0; n < kBlockSamples; ++n)
        pairs[n] = Round(left[n]) | Round(right[n]) << 16;
    std::memcpy(samples, pairs.data(), sizeof pairs);
}

DMB_CODEC_WIDE void InterleaveWide(Channel left, Channel right, std::int16_t* samples) {
    InterleaveAsIs(left, right, samples);
}

void Interleave(Channel left, Channel right, std::int16_t* samples) {
    if (HasWideVectors())
        InterleaveWide(left, right, samples);
    else
        InterleaveAsIs(left, right, samples);
}

// The lines of eight short windows as a long spectrum of the same colour.
Spectrum Lengthened(const Spectrum& shortLines) {
    Spectrum spectrum;
    for (std::size_t k = 0; k < kBlockSamples; ++k)
        spectrum[k] = shortLines[128 * (k % kShortWindows) + k / kShortWindows];
    return spectrum;
}

} // namespace

struct BsacDecoder::Impl {
    explicit Impl(const BsacConfig& streamConfig) : config(streamConfig) {}

    BsacStatus DecodeSpectra(std::span<const std::uint8_t> bytes);
    void Conceal();
    BsacBlock Finish(BsacStatus status);

    BsacConfig config;

    std::span<const std::uint8_t> unit; // what is still to be decoded
    unsigned blocksOut = 0;             // of this unit
    unsigned blocksMissing = 0;         // still to be replaced, after a bad length

    BlockHeader header;
    LayerGeometry geometry;
    LayerLoop<ArithmeticDecoder> layers;
    SideInformation info;
    BitPlanes planes;
    Reconstruction reconstruction;
    Spectra spectra{}; // of the last good block, fading while blocks are missing
    bool spectraAreShort = false;
    unsigned blocksConcealed = 0;

    std::array<FilterBank, kMaxChannels> filterBanks;
    std::array<std::int16_t, kMaxChannels * kBlockSamples> samples{};
};

// Fills `spectra` from the block at the start of `bytes`, or leaves them alone.
BsacStatus BsacDecoder::Impl::DecodeSpectra(std::span<const std::uint8_t> bytes) {
    const BsacStatus headerStatus = ReadBlockHeader(bytes, *config.rate, config.channels, header);
    if (headerStatus != BsacStatus::kOk)
        return headerStatus;
    const std::size_t present = std::min<std::size_t>(header.frameLength, bytes.size());
    const auto blockBits = static_cast<int>(present * 8);
    const BsacStatus layerStatus = LayOutLayers(*config.rate, header, blockBits, geometry);
    if (layerStatus != BsacStatus::kOk)
        return layerStatus;
    if (geometry.layers > 0 && geometry.layersPresent == 0)
        return BsacStatus::kMissing;
    info = SideInformation{};
    planes.Reset(config.channels);
    layers.Run(bytes.first(present), header, geometry, blockBits, info, planes);
    reconstruction.Run(*config.rate, header, geometry, info, planes, spectra);
    spectraAreShort = header.IsShort();
    blocksConcealed = 0;
    return present < header.frameLength ? BsacStatus::kShortened : BsacStatus::kOk;
}

// Makes the spectra those of a long block that takes the place of a missing one.
void BsacDecoder::Impl::Conceal() {
    ++blocksConcealed;
    const float fade = blocksConcealed < kBlocksToSilence ? kFade : 0.0F;
    for (unsigned c = 0; c < config.channels; ++c) {
        if (spectraAreShort)
            spectra[c] = Lengthened(spectra[c]);
        for (float& line : spectra[c])
            line *= fade;
    }
    spectraAreShort = false;
    header.windowSequence = WindowSequence::kLong;
    header.windowShape = filterBanks[0].Shape();
}

BsacBlock BsacDecoder::Impl::Finish(BsacStatus status) {
    if (!IsDecoded(status))
        Conceal();
    ++blocksOut;
    const unsigned channels = config.channels;
    const auto left = filterBanks[0].Run(spectra[0], header.windowSequence, header.windowShape);
    if (channels == 2) {
        const auto right = filterBanks[1].Run(spectra[1], header.windowSequence, header.windowShape);
        Interleave(left, right, samples.data());
    } else {
        for (std::size_t n = 0; n < kBlockSamples; ++n)
            samples[n] = static_cast<std::int16_t>(Round(left[n]));
    }
    return {status, std::span<const std::int16_t>(samples).first(static_cast<std::size_t>(channels) * kBlockSamples)};
}

BsacDecoder::BsacDecoder(const BsacConfig& config) : impl(std::make_unique<Impl>(config)) {}

BsacDecoder::~BsacDecoder() = default;

const BsacConfig& BsacDecoder::Config() const {
    return impl->config;
}

void BsacDecoder::Push(std::span<const std::uint8_t> accessUnit) {
    impl->unit = accessUnit;
    impl->blocksOut = 0;
    impl->blocksMissing = accessUnit.size() < 2 ? impl->config.subFrames : 0;
}

std::optional<BsacBlock> BsacDecoder::Next() {
    Impl& d = *impl;
    if (d.blocksMissing > 0) {
        --d.blocksMissing;
        d.unit = {};
        return d.Finish(BsacStatus::kMissing);
    }
    if (d.unit.size() < 2 || d.blocksOut >= kMaxBlocksPerUnit)
        return std::nullopt;

    const std::span<const std::uint8_t> bytes = d.unit;
    const std::size_t length = wire::BitReader(bytes).Read(11);
    BsacStatus status = length < 2 ? BsacStatus::kBadLength : d.DecodeSpectra(bytes);
    if (length < 2 || length > bytes.size()) {
        // No further block can be found. Those that the unit was meant to hold are made up.
        d.unit = {};
        d.blocksMissing = d.config.subFrames > d.blocksOut + 1 ? d.config.subFrames - d.blocksOut - 1 : 0;
    } else {
        d.unit = bytes.subspan(length);
    }
    return d.Finish(status);
}

void BsacDecoder::Flush() {
    impl->unit = {};
    impl->blocksOut = 0;
    impl->blocksMissing = 0;
    impl->spectra = Spectra{};
    impl->spectraAreShort = false;
    impl->blocksConcealed = 0;
    impl->reconstruction.Reset();
    for (FilterBank& bank : impl->filterBanks)
        bank.Reset();
}

} // namespace codec

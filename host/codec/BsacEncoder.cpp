#include "host/codec/BsacEncoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <utility>

#include "host/codec/AnalysisBank.h"
#include "host/codec/BlockEncoder.h"
#include "host/codec/BlockPlan.h"
#include "host/codec/Reconstruction.h"
#include "host/codec/TransientDetector.h"
#include "host/wire/BitWriter.h"

namespace codec {

namespace {

// Frequencies above this cost more than they give, by bits per second of a channel.
unsigned Bandwidth(unsigned bitsPerChannel) {
    if (bitsPerChannel < 20000)
        return 6000;
    if (bitsPerChannel < 30000)
        return 9000;
    if (bitsPerChannel < 44000)
        return 12000;
    return bitsPerChannel < 60000 ? 14500 : 16500;
}

// Number of scalefactor bands that begin below a frequency.
std::uint8_t BandsBelow(std::span<const std::uint16_t> edges, unsigned rate, unsigned frequency) {
    const unsigned lines = edges.back() * 2 * frequency / rate;
    unsigned bands = 1;
    while (bands + 1 < edges.size() && edges[bands] < lines)
        ++bands;
    return static_cast<std::uint8_t>(bands);
}

} // namespace

bool IsSupported(const BsacEncoderSettings& settings) {
    const bool rate = settings.sampleRate == 24000 || settings.sampleRate == 44100 || settings.sampleRate == 48000;
    const bool channels = settings.channels == 1 || settings.channels == 2;
    return rate && channels && settings.bitsPerSecond >= 32000 && settings.bitsPerSecond <= 128000;
}

struct BsacEncoder::Impl {
    explicit Impl(const BsacEncoderSettings& encoderSettings) : settings(encoderSettings) {
        config.rate = FindRate(settings.sampleRate);
        config.channels = settings.channels;
    }

    WindowSequence Take(std::span<const std::int16_t> interleaved);
    [[nodiscard]] unsigned NextBlockBytes();
    [[nodiscard]] std::uint8_t GroupWindows() const;
    [[nodiscard]] BlockHeader MakeHeader(WindowSequence sequence);

    void Try(const BlockPlan& plan, int level);
    void Search(const BlockPlan& plan);
    void EncodeSilence(const BlockHeader& header);

    BsacEncoderSettings settings;
    BsacConfig config;

    // Of each channel: samples of the block before, of this block, of the next one.
    std::array<std::array<float, 3 * kBlockSamples>, kMaxChannels> history{};
    std::array<TransientDetector, kMaxChannels> detectors;
    WindowPlanner windows;
    AnalysisBank analysis;
    Spectra spectra{};
    std::uint64_t unspentBytes = 0; // in 1 / (8 * sampleRate) bytes: what blocks of whole bytes leave over

    BlockEncoder encoder;
    Reconstruction reconstruction;
    BlockContent content;
    Spectra decoded{};

    std::optional<int> lastLevel; // best for the block before, unless that was silent
    int bestLevel = 0;
    double bestDistortion = 0;
    std::vector<std::uint8_t> best; // the block so far; empty while nothing fitted
};

// Moves on by a block of samples and makes its spectra.
WindowSequence BsacEncoder::Impl::Take(std::span<const std::int16_t> interleaved) {
    TransientDetector::Attack attack;
    for (unsigned c = 0; c < settings.channels; ++c) {
        auto& samples = history[c];
        std::copy(samples.begin() + kBlockSamples, samples.end(), samples.begin());
        for (std::size_t n = 0; n < kBlockSamples; ++n)
            samples[2 * kBlockSamples + n] = interleaved[n * settings.channels + c];
        const TransientDetector::Attack one =
            detectors[c].Look(std::span<const float>(samples).subspan(2 * kBlockSamples));
        attack.early = attack.early || one.early;
        attack.late = attack.late || one.late;
    }
    const WindowSequence sequence = windows.Plan(attack);
    for (unsigned c = 0; c < settings.channels; ++c)
        analysis.Run(std::span<const float>(history[c]).first<2 * kBlockSamples>(), sequence, WindowShape::kSine,
                     WindowShape::kSine, spectra[c]);
    return sequence;
}

// Blocks of whole bytes that keep the rate in the long run.
unsigned BsacEncoder::Impl::NextBlockBytes() {
    const std::uint64_t unit = std::uint64_t{8} * settings.sampleRate;
    unspentBytes += std::uint64_t{settings.bitsPerSecond} * kBlockSamples;
    const std::uint64_t bytes = unspentBytes / unit;
    unspentBytes -= bytes * unit;
    return static_cast<unsigned>(bytes);
}

// Windows of like energy share their scalefactors; a jump opens a new group.
std::uint8_t BsacEncoder::Impl::GroupWindows() const {
    constexpr double kJump = 4;
    constexpr double kFloor = 1e4;
    double groupEnergy = 0;
    unsigned grouping = 0;
    for (unsigned w = 0; w < kShortWindows; ++w) {
        double energy = kFloor;
        for (unsigned c = 0; c < settings.channels; ++c) {
            for (unsigned i = 128 * w; i < 128 * (w + 1); ++i)
                energy += static_cast<double>(spectra[c][i]) * spectra[c][i];
        }
        const bool joins = w > 0 && energy < kJump * groupEnergy && groupEnergy < kJump * energy;
        if (joins)
            grouping |= 1U << (kShortWindows - 1 - w);
        else
            groupEnergy = energy;
    }
    return static_cast<std::uint8_t>(grouping);
}

BlockHeader BsacEncoder::Impl::MakeHeader(WindowSequence sequence) {
    constexpr std::uint8_t kBaseBand = 10;
    const unsigned bitsPerChannel = settings.bitsPerSecond / settings.channels;
    BlockHeader header;
    header.frameLength = NextBlockBytes();
    header.channels = settings.channels;
    // One layer for each kbit/s of a channel: the last one's target is then not beyond the block.
    header.topLayer = static_cast<std::uint8_t>(std::min(bitsPerChannel / 1000 - 16, 63U));
    header.baseBand = kBaseBand;
    header.windowSequence = sequence;
    header.maxSfb = BandsBelow(BandEdges(*config.rate, header), settings.sampleRate, Bandwidth(bitsPerChannel));
    if (header.IsShort())
        header.grouping = GroupWindows();
    return header;
}

// Encodes with a level and keeps the block when it is the best so far.
void BsacEncoder::Impl::Try(const BlockPlan& plan, int level) {
    plan.Quantise(level, content);
    wire::BitWriter writer;
    if (!encoder.Encode(*config.rate, content, writer))
        return;
    reconstruction.Run(*config.rate, content.header, encoder.Geometry(), content.info, encoder.Planes(), decoded);
    const double distortion = plan.Distortion(decoded);
    if (best.empty() || distortion < bestDistortion) {
        bestDistortion = distortion;
        bestLevel = level;
        best = writer.Take();
    }
}

// Coarse steps leave bits unused, fine ones get their lower planes cut off; in between lies the least
// distortion.
void BsacEncoder::Impl::Search(const BlockPlan& plan) {
    constexpr int kFinest = 60; // levels below the coarsest: some 90 dB
    constexpr int kFirstStride = 8;
    best.clear();
    const int coarsest = plan.CoarsestLevel();
    if (lastLevel && *lastLevel <= coarsest && *lastLevel >= coarsest - kFinest)
        Try(plan, *lastLevel);
    int stride = 4;
    if (best.empty()) {
        for (int level = coarsest; level >= coarsest - kFinest; level -= kFirstStride)
            Try(plan, level);
    }
    for (; stride >= 1 && !best.empty(); stride /= 2) {
        int before = 0;
        do {
            before = bestLevel;
            Try(plan, before - stride);
            if (bestLevel == before)
                Try(plan, before + stride);
        } while (bestLevel != before && std::abs(bestLevel - coarsest) <= kFinest);
    }
}

void BsacEncoder::Impl::EncodeSilence(const BlockHeader& header) {
    content = BlockContent{};
    content.header = header;
    content.header.maxSfb = 0;
    wire::BitWriter writer;
    // A header alone fits into every block of the supported rates.
    if (encoder.Encode(*config.rate, content, writer))
        best = writer.Take();
}

BsacEncoder::BsacEncoder(const BsacEncoderSettings& settings) : impl(std::make_unique<Impl>(settings)) {}

BsacEncoder::~BsacEncoder() = default;

const BsacConfig& BsacEncoder::Config() const {
    return impl->config;
}

std::vector<std::uint8_t> BsacEncoder::Encode(std::span<const std::int16_t> interleaved) {
    const BlockHeader header = impl->MakeHeader(impl->Take(interleaved));
    const BlockPlan plan(*impl->config.rate, header, impl->spectra);
    impl->best.clear();
    impl->lastLevel = plan.Silent() ? std::nullopt : impl->lastLevel;
    if (!plan.Silent())
        impl->Search(plan);
    if (impl->best.empty())
        impl->EncodeSilence(header);
    else
        impl->lastLevel = impl->bestLevel;
    return std::move(impl->best);
}

} // namespace codec

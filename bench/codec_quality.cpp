// Segmental signal-to-noise ratio of encoder and decoder together, on three clips. Ends with status 1 when one of them
// at 48 kHz, stereo, 96 kbit/s stays below the bar.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <span>
#include <vector>

#include "bench/codec_clips.h"
#include "host/codec/BsacDecoder.h"
#include "host/codec/BsacEncoder.h"

namespace {

constexpr double kBar = 15; // dB

std::vector<std::int16_t> ThereAndBack(const bench::Clip& clip, unsigned bitsPerSecond) {
    codec::BsacEncoder encoder({clip.rate, clip.channels, bitsPerSecond});
    codec::BsacDecoder decoder(encoder.Config());
    std::vector<std::int16_t> input = clip.samples;
    const std::size_t block = std::size_t{codec::kSamplesPerBlock} * clip.channels;
    const std::size_t delay = std::size_t{codec::BsacEncoder::kDelaySamples} * clip.channels;
    input.resize((input.size() + delay + block - 1) / block * block);
    std::vector<std::int16_t> output;
    for (std::size_t start = 0; start < input.size(); start += block) {
        const auto unit = encoder.Encode(std::span<const std::int16_t>(input).subspan(start, block));
        decoder.Push(unit);
        while (const auto decoded = decoder.Next())
            output.insert(output.end(), decoded->samples.begin(), decoded->samples.end());
    }
    output.erase(output.begin(), output.begin() + static_cast<std::ptrdiff_t>(delay));
    output.resize(clip.samples.size());
    return output;
}

// Mean over segments of 20 ms, each limited to 0..35 dB; segments below -60 dB of full scale do not count.
double SegmentalRatio(const bench::Clip& clip, std::span<const std::int16_t> decoded) {
    const std::size_t segment = static_cast<std::size_t>(clip.rate / 50) * clip.channels;
    double sum = 0;
    unsigned segments = 0;
    for (std::size_t start = 0; start + segment <= clip.samples.size(); start += segment) {
        double signal = 0;
        double noise = 0;
        for (std::size_t i = start; i < start + segment; ++i) {
            const double x = clip.samples[i];
            const double error = x - decoded[i];
            signal += x * x;
            noise += error * error;
        }
        if (signal / static_cast<double>(segment) < 32.8 * 32.8)
            continue;
        sum += std::clamp(10 * std::log10(signal / std::max(noise, 1e-9)), 0.0, 35.0);
        ++segments;
    }
    return segments == 0 ? 0 : sum / segments;
}

bool Measure(const bench::Clip& clip, unsigned bitsPerSecond, bool barred) {
    if (clip.samples.empty()) {
        std::printf("%-16s not measured: espeak-ng is missing\n", clip.name.c_str());
        return !barred;
    }
    const double ratio = SegmentalRatio(clip, ThereAndBack(clip, bitsPerSecond));
    std::printf("%-16s %6u Hz %u ch %4u kbit/s  %5.1f dB%s\n", clip.name.c_str(), clip.rate, clip.channels,
                bitsPerSecond / 1000, ratio, barred && ratio < kBar ? "  below the bar" : "");
    return !barred || ratio >= kBar;
}

} // namespace

int main() {
    bool good = true;
    for (const unsigned rate : {48000U, 44100U, 24000U}) {
        for (const unsigned channels : {2U, 1U}) {
            const bench::Clip clips[] = {bench::HarmonicMusic(rate, channels, 8), bench::Speech(rate, channels),
                                         bench::Castanets(rate, channels, 6)};
            for (const unsigned bitsPerSecond : {32000U, 64000U, 96000U, 128000U}) {
                const bool barred = rate == 48000 && channels == 2 && bitsPerSecond == 96000;
                for (const bench::Clip& clip : clips)
                    good = Measure(clip, bitsPerSecond, barred) && good;
            }
        }
    }
    return good ? 0 : 1;
}

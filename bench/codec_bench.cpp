// Speed of the BSAC decoder and encoder beside libavcodec's AAC decoder, on the same programme: 48 kHz stereo at
// 96 kbit/s, one thread. "realtime" is seconds of sound for each second of processor time.
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/codec_aac.h"
#include "bench/codec_clips.h"
#include "host/codec/BsacDecoder.h"
#include "host/codec/BsacEncoder.h"

namespace {

constexpr unsigned kRate = 48000;
constexpr unsigned kChannels = 2;
constexpr unsigned kBitsPerSecond = 96000;

// Music, clicks and, where it can be made, speech, one after another.
const bench::Clip& Programme() {
    static const bench::Clip clip = [] {
        bench::Clip all = bench::HarmonicMusic(kRate, kChannels, 8);
        for (const bench::Clip& part : {bench::Castanets(kRate, kChannels, 6), bench::Speech(kRate, kChannels)})
            all.samples.insert(all.samples.end(), part.samples.begin(), part.samples.end());
        all.name = "programme";
        return all;
    }();
    return clip;
}

std::vector<std::vector<std::uint8_t>> Encode(const bench::Clip& clip, codec::BsacEncoder& encoder) {
    constexpr std::size_t kBlock = std::size_t{codec::kSamplesPerBlock} * kChannels;
    std::vector<std::vector<std::uint8_t>> units;
    for (std::size_t start = 0; start + kBlock <= clip.samples.size(); start += kBlock)
        units.push_back(encoder.Encode(std::span<const std::int16_t>(clip.samples).subspan(start, kBlock)));
    return units;
}

void RealTime(benchmark::State& state, double seconds) {
    state.counters["realtime"] = benchmark::Counter(seconds, benchmark::Counter::kIsIterationInvariantRate);
}

void BsacDecode(benchmark::State& state) {
    codec::BsacEncoder encoder({kRate, kChannels, kBitsPerSecond});
    const auto units = Encode(Programme(), encoder);
    codec::BsacDecoder decoder(encoder.Config());
    for (auto _ : state) {
        for (const auto& unit : units) {
            decoder.Push(unit);
            while (const auto block = decoder.Next())
                benchmark::DoNotOptimize(block->samples.data());
        }
    }
    RealTime(state, Programme().Seconds());
}

void AacDecode(benchmark::State& state) {
    bench::AacProgramme programme(Programme(), kBitsPerSecond);
    for (auto _ : state)
        benchmark::DoNotOptimize(programme.DecodeAll());
    RealTime(state, Programme().Seconds());
    // The encoder does not keep exactly to its rate.
    state.counters["kbit/s"] = static_cast<double>(programme.Bytes()) * 8 / 1000 / Programme().Seconds();
}

void BsacEncode(benchmark::State& state) {
    const bench::Clip& programme = Programme(); // made now, not while time counts
    for (auto _ : state) {
        codec::BsacEncoder encoder({kRate, kChannels, kBitsPerSecond});
        benchmark::DoNotOptimize(Encode(programme, encoder));
    }
    RealTime(state, Programme().Seconds());
}

BENCHMARK(BsacDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(AacDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(BsacEncode)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();

// What a broadcast costs, stage by stage, in multiples of real time (frames of 24 ms a second of work).
//
// The ensemble is made here: one television service of 544 kbit/s with its outer code and four radio services of 256 kbit/s,
// 1568 kbit/s in all.
extern "C" {
#include <fec.h>
}

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "host/medmb/EtiFramer.h"
#include "host/medmb/ServiceReceiver.h"
#include "host/medmb/TestEnsemble.h"

namespace {

using wire::ByteSpan;
using wire::ByteVector;

constexpr int kFrames = 500;
constexpr std::size_t kTelevisionBytes = 1632;
constexpr std::size_t kRadioBytes = 768;

// Interleaved codewords; with `errors` wrong bytes in each.
ByteVector OuterStream(std::size_t bytes, int errors) {
    std::mt19937 random(1);
    void* code = init_rs_char(8, 0x11D, 0, 1, 16, 51);
    const std::size_t count = bytes / medmb::kCodewordBytes;
    ByteVector stream(bytes + medmb::kInterleaverSpan, 0);
    for (std::size_t packet = 0; packet < count; ++packet) {
        std::uint8_t word[medmb::kCodewordBytes];
        for (std::uint8_t& byte : word)
            byte = static_cast<std::uint8_t>(random());
        word[0] = 0x47;
        encode_rs_char(code, word, word + medmb::kTransportPacketBytes);
        for (int i = 0; i < errors; ++i)
            word[1 + static_cast<std::size_t>(i) * 20] ^= 0xFF;
        for (std::size_t i = 0; i < medmb::kCodewordBytes; ++i)
            stream[packet * medmb::kCodewordBytes + i + medmb::kCodewordBytes * (i % medmb::kInterleaverBranches)] =
                word[i];
    }
    free_rs_char(code);
    stream.resize(bytes);
    return stream;
}

// A silent frame with a check sum that is right.
ByteVector AudioFrame() {
    ByteVector frame(kRadioBytes, 0);
    const ByteVector header = {0xFF, 0xFC, 0xC4, 0x00};
    std::copy(header.begin(), header.end(), frame.begin());
    const std::size_t bits = 2 * (11 * 4 + 12 * 3 + 4 * 2);
    wire::Put16(frame, 4, wire::AudioCrc(frame, 48, bits, wire::AudioCrc(frame, 16, 16)));
    return frame;
}

ByteVector Ensemble(int errors) {
    using namespace medmb::test;
    const ByteVector outer = OuterStream(kTelevisionBytes * kFrames, errors);
    TestEnsemble ensemble;
    ensemble.data = {TelevisionService(0xF1E00401, 1)};
    ensemble.labels[0xF1E00401] = "TELEVISION";
    ensemble.subs.push_back({1, [&outer](int frame) {
                                 const auto part = ByteSpan(outer).subspan(
                                     static_cast<std::size_t>(frame) * kTelevisionBytes, kTelevisionBytes);
                                 return ByteVector(part.begin(), part.end());
                             }});
    for (int i = 0; i < 4; ++i) {
        const auto id = static_cast<std::uint32_t>(0xE201 + i);
        ensemble.radio.push_back(RadioService(id, 10 + i));
        ensemble.labels[id] = "RADIO " + std::to_string(i);
        ensemble.subs.push_back({10 + i, [](int) { return AudioFrame(); }});
    }
    ByteVector stream;
    for (int i = 0; i < kFrames; ++i)
        wire::AppendBytes(stream, ensemble.Frame(i));
    return stream;
}

class Sink final : public medmb::ServiceSink {
public:
    void OnPackets(ByteSpan packets, bool /*discontinuity*/) override { bytes += packets.size(); }
    void OnAudio(const medmb::RadioFrame& frame, bool /*discontinuity*/) override { bytes += frame.bytes.size(); }
    void OnText(const medmb::DynamicLabelText& /*text*/) override {}
    void OnObject(const medmb::MotObject& /*object*/) override {}
    std::size_t bytes = 0;
};

void ReportRealTime(benchmark::State& state) {
    state.counters["times_real_time"] =
        benchmark::Counter(0.024 * kFrames * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void Framer(benchmark::State& state) {
    const ByteVector stream = Ensemble(0);
    for (auto _ : state) {
        medmb::EtiFramer framer;
        std::size_t frames = 0;
        for (std::size_t at = 0; at < stream.size(); at += 65536) {
            framer.Push(ByteSpan(stream).subspan(at, std::min<std::size_t>(65536, stream.size() - at)));
            while (framer.Next())
                ++frames;
        }
        benchmark::DoNotOptimize(frames);
    }
    ReportRealTime(state);
}
BENCHMARK(Framer);

void Fic(benchmark::State& state) {
    const ByteVector stream = Ensemble(0);
    for (auto _ : state) {
        medmb::FicDecoder fic;
        for (std::size_t at = 0; at < stream.size(); at += wire::kEtiFrameBytes)
            fic.PushFic(wire::EtiFrame::Parse(ByteSpan(stream).subspan(at, wire::kEtiFrameBytes))->Fic());
        benchmark::DoNotOptimize(fic.Fibs());
    }
    ReportRealTime(state);
}
BENCHMARK(Fic);

// The argument is the number of wrong bytes in every codeword.
void OuterCode(benchmark::State& state) {
    const ByteVector outer = OuterStream(kTelevisionBytes * kFrames, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        medmb::OuterDecoder decoder;
        ByteVector packets;
        for (std::size_t at = 0; at < outer.size(); at += kTelevisionBytes) {
            packets.clear();
            (void)decoder.Push(ByteSpan(outer).subspan(at, kTelevisionBytes), packets);
        }
        benchmark::DoNotOptimize(decoder.Count().packets);
    }
    ReportRealTime(state);
}
BENCHMARK(OuterCode)->Arg(0)->Arg(1)->Arg(8);

// From bytes of the source to transport packets, or to audio frames.
void WholeService(benchmark::State& state, std::uint32_t service, int errors) {
    const ByteVector stream = Ensemble(errors);
    for (auto _ : state) {
        Sink sink;
        medmb::ServiceReceiver receiver(service, sink);
        medmb::EtiFramer framer;
        for (std::size_t at = 0; at < stream.size(); at += 65536) {
            framer.Push(ByteSpan(stream).subspan(at, std::min<std::size_t>(65536, stream.size() - at)));
            while (const auto frame = framer.Next())
                receiver.Push(*frame);
        }
        benchmark::DoNotOptimize(sink.bytes);
    }
    ReportRealTime(state);
}
BENCHMARK_CAPTURE(WholeService, television, 0xF1E00401, 0);
BENCHMARK_CAPTURE(WholeService, television_8_errors, 0xF1E00401, 8);
BENCHMARK_CAPTURE(WholeService, radio, 0xE201, 0);

} // namespace

BENCHMARK_MAIN();

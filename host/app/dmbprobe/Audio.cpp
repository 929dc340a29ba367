// dmbprobe audio: the sound of a radio service.
#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include "host/app/dmbprobe/Commands.h"
#include "host/app/dmbprobe/ServiceWalk.h"
#include "host/app/dmbprobe/WavFile.h"
#include "host/codec/av/LayerTwoDecoder.h"
#include "platform/medmblib.h"

namespace dmbprobe {

namespace {

struct AudioOptions {
    std::string source;
    std::string service;
    std::string output;
};

// A WAV file has one format: that of the first frame. Later frames of another format are fitted to it by repeating or averaging
// samples, so that time goes on evenly. A damaged frame is silence of its length.
class AudioSink final : public medmb::ServiceSink {
public:
    explicit AudioSink(std::string wavPath) : path(std::move(wavPath)) {}

    void OnPackets(wire::ByteSpan /*packets*/, bool /*discontinuity*/) override {}
    void OnText(const medmb::DynamicLabelText& /*text*/) override {}
    void OnObject(const medmb::MotObject& /*object*/) override {}

    void OnAudio(const medmb::RadioFrame& frame, bool /*discontinuity*/) override {
        codec::LayerTwoSamples samples;
        if (frame.damaged || !decoder.Decode(frame.bytes, samples)) {
            if (!file)
                return;
            samples.sampleRate = frame.header.sampleRate;
            samples.channels = frame.header.Channels();
            samples.interleaved.assign(static_cast<std::size_t>(wire::kLayerTwoSamples * samples.channels), 0);
            ++silenced;
        }
        if (!file) {
            rate = samples.sampleRate;
            channels = samples.channels;
            file.emplace(path, static_cast<unsigned>(rate), static_cast<unsigned>(channels));
        }
        ++frames;
        file->Write(Fit(samples));
    }

    std::optional<WavFile> file;
    unsigned frames = 0;
    unsigned silenced = 0;

private:
    [[nodiscard]] std::vector<std::int16_t> Fit(const codec::LayerTwoSamples& samples) const {
        if (samples.sampleRate == rate && samples.channels == channels)
            return samples.interleaved;
        const int from = static_cast<int>(samples.interleaved.size()) / samples.channels;
        const int to = static_cast<int>(static_cast<std::int64_t>(from) * rate / samples.sampleRate);
        std::vector<std::int16_t> result;
        for (int i = 0; i < to; ++i) {
            const int first = static_cast<int>(static_cast<std::int64_t>(i) * from / to);
            const int last = std::max(first, static_cast<int>(static_cast<std::int64_t>(i + 1) * from / to) - 1);
            for (int channel = 0; channel < channels; ++channel) {
                int sum = 0;
                int count = 0;
                for (int k = first; k <= last; ++k)
                    for (int c = 0; c < samples.channels; ++c)
                        if (channels == 1 || samples.channels == 1 || c == channel) {
                            sum += samples.interleaved[static_cast<std::size_t>(k * samples.channels + c)];
                            ++count;
                        }
                result.push_back(static_cast<std::int16_t>(sum / count));
            }
        }
        return result;
    }

    std::string path;
    codec::LayerTwoDecoder decoder;
    int rate = 0;
    int channels = 0;
};

int RunAudio(const AudioOptions& options) {
    AudioSink sink(options.output);
    medmb::StageCounters counters;
    const int status =
        PlayService(options.source, options.service, DMB_SERVICE_TYPE_DAB_AUDIO, sink, "audio", counters);
    if (status != kDone)
        return status;
    if (!sink.file) {
        std::cerr << "dmbprobe audio: no whole audio frame\n";
        return kFailed;
    }
    if (!sink.file->Close()) {
        std::cerr << "dmbprobe audio: cannot write " << options.output << '\n';
        return kFailed;
    }
    std::cerr << "dmbprobe audio: " << sink.frames << " frames, " << sink.silenced << " of them silenced\n";
    return kDone;
}

} // namespace

void AddAudio(CLI::App& app, int& status) {
    auto options = std::make_shared<AudioOptions>();
    CLI::App* command = app.add_subcommand("audio", "Writes the sound of a radio service into a WAV file");
    command->add_option("SOURCE", options->source, "ETI: a directory, a file, - or tcp://HOST:PORT")->required();
    command->add_option("--service", options->service, "Label of the service, or its identifier (0x...)")->required();
    command->add_option("OUT.wav", options->output, "16-bit samples, in the format of the first frame")->required();
    command->callback([options, &status] { status = RunAudio(*options); });
}

} // namespace dmbprobe

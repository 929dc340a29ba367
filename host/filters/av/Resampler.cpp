#include "host/filters/av/Resampler.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include <algorithm>

namespace filters {

struct Resampler::State {
    explicit State(int rate) : deviceRate(rate) {}
    ~State() { swr_free(&context); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    bool Open(int rate, int channelCount) {
        swr_free(&context);
        AVChannelLayout from{};
        AVChannelLayout to{};
        av_channel_layout_default(&from, channelCount);
        av_channel_layout_default(&to, kChannels);
        if (swr_alloc_set_opts2(&context, &to, AV_SAMPLE_FMT_S16, deviceRate, &from, AV_SAMPLE_FMT_S16, rate, 0,
                                nullptr) != 0)
            return false;
        // One voice in both loudspeakers is as loud as it was.
        if (channelCount == 1) {
            const double matrix[kChannels] = {1, 1};
            swr_set_matrix(context, matrix, 1);
        }
        if (steered)
            av_opt_set_int(context, "flags", SWR_FLAG_RESAMPLE, 0);
        sampleRate = rate;
        channels = channelCount;
        if (swr_init(context) == 0)
            return true;
        swr_free(&context);
        return false;
    }

    SwrContext* context = nullptr;
    int deviceRate;
    int sampleRate = 0;
    int channels = 0;
    bool steered = false;
    int speed = 0;
};

Resampler::Resampler(int deviceRate) : state_(std::make_unique<State>(deviceRate)) {}

Resampler::~Resampler() = default;

void Resampler::Push(std::span<const std::int16_t> interleaved, int sampleRate, int channels,
                     std::vector<std::int16_t>& out) {
    State& state = *state_;
    if (interleaved.empty() || sampleRate <= 0 || channels <= 0)
        return;
    if ((state.context == nullptr || sampleRate != state.sampleRate || channels != state.channels) &&
        !state.Open(sampleRate, channels))
        return;
    const int frames = static_cast<int>(interleaved.size()) / channels;
    if (state.steered) {
        const std::int64_t made = static_cast<std::int64_t>(frames) * state.deviceRate / sampleRate;
        // Spread over a long stretch, so that the ratio is exact although one block loses less than a sample.
        constexpr int kStretch = 1'000'000;
        if (made > 0)
            (void)swr_set_compensation(state.context, -state.speed, kStretch);
    }
    const int room = swr_get_out_samples(state.context, frames);
    const std::size_t before = out.size();
    out.resize(before + static_cast<std::size_t>(std::max(room, 0)) * kChannels);
    auto* to = reinterpret_cast<std::uint8_t*>(out.data() + before);
    const auto* from = reinterpret_cast<const std::uint8_t*>(interleaved.data());
    const int made = swr_convert(state.context, &to, room, &from, frames);
    out.resize(before + static_cast<std::size_t>(std::max(made, 0)) * kChannels);
}

void Resampler::SetSpeed(int millionths) {
    if (millionths != 0 && !state_->steered) {
        state_->steered = true;
        swr_free(&state_->context); // made again with the filter in it
    }
    state_->speed = millionths;
}

void Resampler::Reset() {
    swr_free(&state_->context);
}

} // namespace filters

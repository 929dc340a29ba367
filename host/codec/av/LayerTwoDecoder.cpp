#include "host/codec/av/LayerTwoDecoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace codec {

struct LayerTwoDecoder::State {
    AVCodecContext* context = nullptr;
    AVPacket* packet = nullptr;
    AVFrame* frame = nullptr;

    State() {
        // The floating-point decoder is within 0.01 of a step of 16 bits of the reference; the integer one is not.
        const AVCodec* decoder = avcodec_find_decoder_by_name("mp2float");
        context = decoder == nullptr ? nullptr : avcodec_alloc_context3(decoder);
        packet = av_packet_alloc();
        frame = av_frame_alloc();
        if (context == nullptr || packet == nullptr || frame == nullptr ||
            avcodec_open2(context, decoder, nullptr) != 0)
            throw std::runtime_error("libavcodec has no MPEG layer II decoder");
    }
    ~State() {
        av_frame_free(&frame);
        av_packet_free(&packet);
        avcodec_free_context(&context);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
};

LayerTwoDecoder::LayerTwoDecoder() : state(std::make_unique<State>()) {}

LayerTwoDecoder::~LayerTwoDecoder() = default;

void LayerTwoDecoder::Flush() {
    avcodec_flush_buffers(state->context);
}

bool LayerTwoDecoder::Decode(std::span<const std::uint8_t> bytes, LayerTwoSamples& samples) {
    if (bytes.empty() || av_new_packet(state->packet, static_cast<int>(bytes.size())) != 0)
        return false;
    std::memcpy(state->packet->data, bytes.data(), bytes.size());
    const bool sent = avcodec_send_packet(state->context, state->packet) == 0;
    av_packet_unref(state->packet);
    if (!sent || avcodec_receive_frame(state->context, state->frame) != 0)
        return false;
    const AVFrame& frame = *state->frame;
    const int channels = frame.ch_layout.nb_channels;
    // The frame's own field is one frame behind when the format changes.
    samples.sampleRate = state->context->sample_rate;
    samples.channels = channels;
    samples.interleaved.resize(static_cast<std::size_t>(frame.nb_samples * channels));
    constexpr float kFullScale = 32768.0F;
    for (int channel = 0; channel < channels; ++channel) {
        const auto* from = reinterpret_cast<const float*>(frame.extended_data[channel]);
        for (int i = 0; i < frame.nb_samples; ++i) {
            const float value = std::clamp(from[i] * kFullScale, -32768.0F, 32767.0F);
            samples.interleaved[static_cast<std::size_t>(i * channels + channel)] =
                static_cast<std::int16_t>(std::lrintf(value));
        }
    }
    av_frame_unref(state->frame);
    return true;
}

} // namespace codec

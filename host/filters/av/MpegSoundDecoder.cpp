#include "host/filters/av/MpegSoundDecoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <cstring>

namespace filters {

struct MpegSoundDecoder::State {
    AVCodecContext* context = nullptr;
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    SwrContext* mixer = nullptr;
    int mixedChannels = 0; // of the input that the mixer was made for
    int mixedRate = 0;
    bool ready = false;

    State(Kind kind, ByteSpan configuration) {
        const AVCodec* decoder = avcodec_find_decoder(kind == Kind::kAac ? AV_CODEC_ID_AAC : AV_CODEC_ID_MP3);
        context = decoder == nullptr ? nullptr : avcodec_alloc_context3(decoder);
        if (context == nullptr || packet == nullptr || frame == nullptr)
            return;
        context->extradata =
            static_cast<std::uint8_t*>(av_mallocz(configuration.size() + AV_INPUT_BUFFER_PADDING_SIZE));
        if (context->extradata == nullptr)
            return;
        std::ranges::copy(configuration, context->extradata);
        context->extradata_size = static_cast<int>(configuration.size());
        ready = avcodec_open2(context, decoder, nullptr) == 0;
    }
    ~State() {
        swr_free(&mixer);
        av_frame_free(&frame);
        av_packet_free(&packet);
        avcodec_free_context(&context);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    // To 16 bits and at most two channels; the rate stays.
    bool Mix(MpegSamples& samples) {
        const int channels = frame->ch_layout.nb_channels;
        if (mixer == nullptr || channels != mixedChannels || frame->sample_rate != mixedRate) {
            swr_free(&mixer);
            AVChannelLayout to{};
            av_channel_layout_default(&to, std::min(channels, 2));
            const bool made =
                swr_alloc_set_opts2(&mixer, &to, AV_SAMPLE_FMT_S16, frame->sample_rate, &frame->ch_layout,
                                    static_cast<AVSampleFormat>(frame->format), frame->sample_rate, 0, nullptr) == 0 &&
                swr_init(mixer) == 0;
            if (!made)
                return false;
            mixedChannels = channels;
            mixedRate = frame->sample_rate;
        }
        samples.sampleRate = frame->sample_rate;
        samples.channels = std::min(channels, 2);
        samples.interleaved.resize(static_cast<std::size_t>(frame->nb_samples * samples.channels));
        auto* to = reinterpret_cast<std::uint8_t*>(samples.interleaved.data());
        return swr_convert(mixer, &to, frame->nb_samples, const_cast<const std::uint8_t**>(frame->extended_data),
                           frame->nb_samples) == frame->nb_samples;
    }
};

MpegSoundDecoder::MpegSoundDecoder(Kind kind, ByteSpan configuration)
    : state_(std::make_unique<State>(kind, configuration)) {}

MpegSoundDecoder::~MpegSoundDecoder() = default;

bool MpegSoundDecoder::IsReady() const {
    return state_->ready;
}

bool MpegSoundDecoder::Decode(ByteSpan block, MpegSamples& samples) {
    if (!state_->ready || block.empty() || av_new_packet(state_->packet, static_cast<int>(block.size())) != 0)
        return false;
    std::memcpy(state_->packet->data, block.data(), block.size());
    const bool sent = avcodec_send_packet(state_->context, state_->packet) == 0;
    av_packet_unref(state_->packet);
    if (!sent || avcodec_receive_frame(state_->context, state_->frame) != 0)
        return false;
    const bool mixed = state_->Mix(samples);
    av_frame_unref(state_->frame);
    return mixed;
}

void MpegSoundDecoder::Flush() {
    if (state_->ready)
        avcodec_flush_buffers(state_->context);
}

} // namespace filters

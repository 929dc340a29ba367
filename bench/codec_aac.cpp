#include "bench/codec_aac.h"

#include <algorithm>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

namespace bench {

namespace {

void Check(int result, const char* what) {
    if (result < 0)
        throw std::runtime_error(what);
}

} // namespace

struct AacProgramme::Impl {
    std::vector<AVPacket*> packets;
    AVCodecContext* decoder = nullptr;
    AVFrame* frame = av_frame_alloc();
    SwrContext* toInteger = nullptr;
    std::vector<std::int16_t> samples;
    std::size_t bytes = 0;

    ~Impl() {
        for (AVPacket*& packet : packets)
            av_packet_free(&packet);
        avcodec_free_context(&decoder);
        av_frame_free(&frame);
        swr_free(&toInteger);
    }

    void Collect(AVCodecContext* encoder) {
        for (;;) {
            AVPacket* packet = av_packet_alloc();
            if (avcodec_receive_packet(encoder, packet) < 0) {
                av_packet_free(&packet);
                return;
            }
            bytes += static_cast<std::size_t>(packet->size);
            packets.push_back(packet);
        }
    }
};

AacProgramme::AacProgramme(const Clip& clip, unsigned bitsPerSecond) : impl(std::make_unique<Impl>()) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    AVCodecContext* encoder = avcodec_alloc_context3(codec);
    encoder->bit_rate = bitsPerSecond;
    encoder->sample_rate = static_cast<int>(clip.rate);
    encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
    av_channel_layout_default(&encoder->ch_layout, static_cast<int>(clip.channels));
    Check(avcodec_open2(encoder, codec, nullptr), "AAC encoder");
    AVFrame* input = av_frame_alloc();
    const auto size = static_cast<std::size_t>(encoder->frame_size);
    for (std::size_t start = 0; start + size <= clip.Frames(); start += size) {
        av_frame_unref(input);
        input->nb_samples = encoder->frame_size;
        input->format = encoder->sample_fmt;
        av_channel_layout_copy(&input->ch_layout, &encoder->ch_layout);
        input->sample_rate = encoder->sample_rate;
        input->pts = static_cast<std::int64_t>(start);
        Check(av_frame_get_buffer(input, 0), "AAC input");
        for (unsigned c = 0; c < clip.channels; ++c) {
            auto* plane = reinterpret_cast<float*>(input->extended_data[c]);
            for (std::size_t n = 0; n < size; ++n)
                plane[n] = static_cast<float>(clip.samples[(start + n) * clip.channels + c]) / 32768.0F;
        }
        Check(avcodec_send_frame(encoder, input), "AAC encoding");
        impl->Collect(encoder);
    }
    Check(avcodec_send_frame(encoder, nullptr), "AAC end");
    impl->Collect(encoder);
    av_frame_free(&input);

    const AVCodec* decoderCodec = avcodec_find_decoder_by_name("aac");
    impl->decoder = avcodec_alloc_context3(decoderCodec);
    AVCodecParameters* parameters = avcodec_parameters_alloc();
    Check(avcodec_parameters_from_context(parameters, encoder), "AAC parameters");
    Check(avcodec_parameters_to_context(impl->decoder, parameters), "AAC parameters");
    avcodec_parameters_free(&parameters);
    avcodec_free_context(&encoder);
    impl->decoder->thread_count = 1;
    Check(avcodec_open2(impl->decoder, decoderCodec, nullptr), "AAC decoder");

    AVChannelLayout layout;
    av_channel_layout_default(&layout, static_cast<int>(clip.channels));
    const auto rate = static_cast<int>(clip.rate);
    Check(swr_alloc_set_opts2(&impl->toInteger, &layout, AV_SAMPLE_FMT_S16, rate, &layout, AV_SAMPLE_FMT_FLTP, rate, 0,
                              nullptr),
          "AAC samples");
    Check(swr_init(impl->toInteger), "AAC samples");
    impl->samples.resize(std::size_t{2048} * clip.channels);
}

AacProgramme::~AacProgramme() = default;

std::size_t AacProgramme::DecodeAll() {
    std::size_t samples = 0;
    for (AVPacket* packet : impl->packets) {
        Check(avcodec_send_packet(impl->decoder, packet), "AAC decoding");
        while (avcodec_receive_frame(impl->decoder, impl->frame) >= 0) {
            auto* target = reinterpret_cast<std::uint8_t*>(impl->samples.data());
            const int converted =
                swr_convert(impl->toInteger, &target, 2048,
                            const_cast<const std::uint8_t**>(impl->frame->extended_data), impl->frame->nb_samples);
            Check(converted, "AAC samples");
            samples += static_cast<std::size_t>(converted);
        }
    }
    avcodec_flush_buffers(impl->decoder);
    return samples;
}

std::size_t AacProgramme::Bytes() const {
    return impl->bytes;
}

} // namespace bench

#include "host/headend/SoundEncoder.h"

#include <cmath>
#include <memory>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

#include "host/codec/BsacConfig.h"
#include "host/codec/BsacEncoder.h"

namespace headend {

namespace {

struct ContextFree {
    void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FrameFree {
    void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketFree {
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};

void Check(bool good, const char* what) {
    if (!good)
        throw std::runtime_error(std::string("sound encoder: ") + what);
}

// AAC-LC by libavcodec.
CodedSound EncodeAac(const SoundCoding& coding, std::span<const float> samples) {
    const AVCodec* codec = avcodec_find_encoder_by_name("aac");
    Check(codec != nullptr, "libavcodec has no aac encoder");
    const std::unique_ptr<AVCodecContext, ContextFree> context(avcodec_alloc_context3(codec));
    Check(context != nullptr, "out of memory");
    context->sample_rate = coding.sampleRate;
    context->sample_fmt = AV_SAMPLE_FMT_FLTP;
    context->bit_rate = coding.kbps * 1000;
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
    av_channel_layout_default(&context->ch_layout, coding.channels);
    Check(avcodec_open2(context.get(), codec, nullptr) == 0, "settings refused");

    const std::unique_ptr<AVFrame, FrameFree> frame(av_frame_alloc());
    const std::unique_ptr<AVPacket, PacketFree> packet(av_packet_alloc());
    Check(frame && packet, "out of memory");
    frame->format = context->sample_fmt;
    frame->nb_samples = kSoundUnitSamples;
    frame->sample_rate = coding.sampleRate;
    Check(av_channel_layout_copy(&frame->ch_layout, &context->ch_layout) == 0, "out of memory");
    Check(av_frame_get_buffer(frame.get(), 0) == 0, "out of memory");

    CodedSound coded;
    coded.audioSpecificConfig.assign(context->extradata, context->extradata + context->extradata_size);
    // The first unit holds nothing but the coder's delay: a receiver that begins with the second is in time.
    bool delay = true;
    const auto drain = [&] {
        while (avcodec_receive_packet(context.get(), packet.get()) == 0) {
            if (!delay)
                coded.units.emplace_back(packet->data, packet->data + packet->size);
            delay = false;
            av_packet_unref(packet.get());
        }
    };
    const auto channels = static_cast<std::size_t>(coding.channels);
    for (std::size_t at = 0; at < samples.size(); at += kSoundUnitSamples * channels) {
        Check(av_frame_make_writable(frame.get()) == 0, "out of memory");
        for (std::size_t channel = 0; channel < channels; ++channel) {
            auto* to = reinterpret_cast<float*>(frame->data[channel]);
            for (std::size_t i = 0; i < kSoundUnitSamples; ++i) {
                const std::size_t from = at + i * channels + channel;
                to[i] = from < samples.size() ? samples[from] : 0.0f;
            }
        }
        Check(avcodec_send_frame(context.get(), frame.get()) == 0, "frame refused");
        drain();
    }
    Check(avcodec_send_frame(context.get(), nullptr) == 0, "cannot be drained");
    drain();
    return coded;
}

CodedSound EncodeBsac(const SoundCoding& coding, std::span<const float> samples) {
    const codec::BsacEncoderSettings settings{.sampleRate = static_cast<unsigned>(coding.sampleRate),
                                              .channels = static_cast<unsigned>(coding.channels),
                                              .bitsPerSecond = static_cast<unsigned>(coding.kbps) * 1000};
    Check(codec::IsSupported(settings), "BSAC does not do this rate");
    codec::BsacEncoder encoder(settings);
    CodedSound coded;
    coded.audioSpecificConfig = codec::WriteBsacConfig(encoder.Config());
    const std::size_t step = kSoundUnitSamples * static_cast<std::size_t>(coding.channels);
    const std::size_t units = (samples.size() + step - 1) / step;
    // The first units hold the encoder's delay alone: a receiver that begins behind them is in time.
    constexpr std::size_t kDelayUnits = codec::BsacEncoder::kDelaySamples / kSoundUnitSamples;
    std::vector<std::int16_t> block(step);
    for (std::size_t unit = 0; unit < units + kDelayUnits; ++unit) {
        for (std::size_t i = 0; i < step; ++i) {
            const std::size_t at = unit * step + i;
            block[i] =
                at < samples.size() ? static_cast<std::int16_t>(std::lround(samples[at] * 32767)) : std::int16_t{0};
        }
        wire::ByteVector bytes = encoder.Encode(block);
        if (unit >= kDelayUnits)
            coded.units.push_back(std::move(bytes));
    }
    return coded;
}

} // namespace

CodedSound EncodeSound(const SoundCoding& coding, std::span<const float> samples) {
    return coding.codec == "aac" ? EncodeAac(coding, samples) : EncodeBsac(coding, samples);
}

} // namespace headend

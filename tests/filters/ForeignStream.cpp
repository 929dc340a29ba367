#include "tests/filters/ForeignStream.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <stdexcept>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

namespace filters_test {

namespace {

constexpr int kWidth = 160;
constexpr int kHeight = 120;
constexpr int kPicturesPerSecond = 25;

void Check(bool good, const char* what) {
    if (!good)
        throw std::runtime_error(std::string("foreign stream: ") + what);
}

struct Deleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFormatContext* format) const {
        if (format->pb != nullptr) {
            av_freep(&format->pb->buffer);
            avio_context_free(&format->pb);
        }
        avformat_free_context(format);
    }
};
template <class T> using Owned = std::unique_ptr<T, Deleter>;

const char* EncoderOf(ForeignSound sound) {
    return sound == ForeignSound::kLayerTwo ? "mp2" : sound == ForeignSound::kLayerThree ? "libmp3lame" : "aac";
}

class Maker {
public:
    explicit Maker(const ForeignWish& wish) : wish_(wish) {
        AVFormatContext* format = nullptr;
        Check(avformat_alloc_output_context2(&format, nullptr, "mpegts", nullptr) >= 0, "no multiplexer");
        format_.reset(format);
        constexpr int kBuffer = 188 * 64;
        format_->pb = avio_alloc_context(static_cast<unsigned char*>(av_malloc(kBuffer)), kBuffer, 1, &stream_.packets,
                                         nullptr, &Maker::Write, nullptr);
        if (wish.withPictures)
            OpenVideo();
        if (wish.withSound)
            OpenAudio();
        AVDictionary* options = nullptr;
        if (wish.sound == ForeignSound::kLatm)
            av_dict_set(&options, "mpegts_flags", "latm", 0);
        Check(avformat_write_header(format_.get(), &options) >= 0, "header");
        av_dict_free(&options);
    }

    ForeignStream Make() {
        const auto frames =
            audio_ ? static_cast<std::int64_t>(wish_.seconds * wish_.sampleRate) / audio_->frame_size : 0;
        const int pictures = wish_.withPictures ? static_cast<int>(wish_.seconds * kPicturesPerSecond) : 0;
        std::int64_t sound = 0;
        for (int i = 0; i < pictures; ++i) {
            for (; sound < frames && sound * audio_->frame_size * kPicturesPerSecond < i * wish_.sampleRate; ++sound)
                PushSound(sound);
            PushPicture(i);
        }
        for (; sound < frames; ++sound)
            PushSound(sound);
        if (video_)
            Encode(*video_, nullptr, *videoStream_, stream_.pictures);
        if (audio_)
            Encode(*audio_, nullptr, *audioStream_, stream_.soundFrames);
        Check(av_write_trailer(format_.get()) >= 0, "trailer");
        avio_flush(format_->pb);
        return std::move(stream_);
    }

private:
    static int Write(void* opaque, std::uint8_t* bytes, int size) {
        auto& packets = *static_cast<std::vector<std::uint8_t>*>(opaque);
        packets.insert(packets.end(), bytes, bytes + size);
        return size;
    }

    void OpenVideo() {
        const AVCodec* codec = avcodec_find_encoder_by_name(wish_.unknownCodecs ? "mpeg2video" : "libx264");
        Check(codec != nullptr, "no picture encoder");
        video_.reset(avcodec_alloc_context3(codec));
        video_->width = kWidth;
        video_->height = kHeight;
        video_->pix_fmt = AV_PIX_FMT_YUV420P;
        video_->time_base = {1, kPicturesPerSecond};
        video_->framerate = {kPicturesPerSecond, 1};
        video_->gop_size = kPicturesPerSecond;
        video_->max_b_frames = wish_.bPictures;
        video_->bit_rate = 300000;
        video_->thread_count = 1;
        if (!wish_.unknownCodecs)
            av_opt_set(video_->priv_data, "preset", "ultrafast", 0);
        videoStream_ = Open(*video_, *codec);
    }

    void OpenAudio() {
        const AVCodec* codec = avcodec_find_encoder_by_name(wish_.unknownCodecs ? "ac3" : EncoderOf(wish_.sound));
        Check(codec != nullptr, "no sound encoder");
        audio_.reset(avcodec_alloc_context3(codec));
        audio_->sample_rate = wish_.sampleRate;
        audio_->sample_fmt = codec->sample_fmts[0];
        audio_->bit_rate = 128000;
        audio_->time_base = {1, wish_.sampleRate};
        av_channel_layout_default(&audio_->ch_layout, 2);
        if (wish_.sound == ForeignSound::kLatm)
            audio_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        audioStream_ = Open(*audio_, *codec);
    }

    AVStream* Open(AVCodecContext& context, const AVCodec& codec) {
        Check(avcodec_open2(&context, &codec, nullptr) == 0, "an encoder refuses");
        AVStream* stream = avformat_new_stream(format_.get(), nullptr);
        Check(stream != nullptr && avcodec_parameters_from_context(stream->codecpar, &context) >= 0, "no stream");
        stream->time_base = context.time_base;
        return stream;
    }

    void PushPicture(int number) {
        const Owned<AVFrame> frame(av_frame_alloc());
        frame->width = kWidth;
        frame->height = kHeight;
        frame->format = AV_PIX_FMT_YUV420P;
        frame->pts = number;
        Check(av_frame_get_buffer(frame.get(), 0) == 0, "no memory");
        for (int plane = 0; plane < 3; ++plane) {
            const int rows = plane == 0 ? kHeight : kHeight / 2;
            for (int y = 0; y < rows; ++y) {
                std::uint8_t* row = frame->data[plane] + static_cast<std::ptrdiff_t>(y) * frame->linesize[plane];
                for (int x = 0; x < (plane == 0 ? kWidth : kWidth / 2); ++x)
                    row[x] = static_cast<std::uint8_t>(plane == 0 ? x + y + 3 * number : 128 + plane * 10);
            }
        }
        Encode(*video_, frame.get(), *videoStream_, stream_.pictures);
    }

    void PushSound(std::int64_t number) {
        const Owned<AVFrame> frame(av_frame_alloc());
        frame->nb_samples = audio_->frame_size;
        frame->format = audio_->sample_fmt;
        frame->sample_rate = wish_.sampleRate;
        frame->pts = number * audio_->frame_size;
        Check(av_channel_layout_copy(&frame->ch_layout, &audio_->ch_layout) == 0, "no memory");
        Check(av_frame_get_buffer(frame.get(), 0) == 0, "no memory");
        for (int i = 0; i < audio_->frame_size; ++i) {
            const double value =
                0.25 * std::sin(2 * std::numbers::pi * 440 * static_cast<double>(frame->pts + i) / wish_.sampleRate);
            SetSample(*frame, i, value);
        }
        Encode(*audio_, frame.get(), *audioStream_, stream_.soundFrames);
    }

    static void SetSample(AVFrame& frame, int index, double value) {
        for (int channel = 0; channel < 2; ++channel) {
            switch (frame.format) {
            case AV_SAMPLE_FMT_FLTP:
                reinterpret_cast<float*>(frame.extended_data[channel])[index] = static_cast<float>(value);
                break;
            case AV_SAMPLE_FMT_S16P:
                reinterpret_cast<std::int16_t*>(frame.extended_data[channel])[index] =
                    static_cast<std::int16_t>(value * 32767);
                break;
            case AV_SAMPLE_FMT_S32P:
                reinterpret_cast<std::int32_t*>(frame.extended_data[channel])[index] =
                    static_cast<std::int32_t>(value * 2147483647.0);
                break;
            default: // AV_SAMPLE_FMT_S16
                reinterpret_cast<std::int16_t*>(frame.data[0])[2 * index + channel] =
                    static_cast<std::int16_t>(value * 32767);
            }
        }
    }

    void Encode(AVCodecContext& context, const AVFrame* frame, const AVStream& stream, int& count) {
        Check(avcodec_send_frame(&context, frame) == 0, "an encoder refuses a frame");
        const Owned<AVPacket> packet(av_packet_alloc());
        while (avcodec_receive_packet(&context, packet.get()) == 0) {
            av_packet_rescale_ts(packet.get(), context.time_base, stream.time_base);
            packet->stream_index = stream.index;
            Check(av_interleaved_write_frame(format_.get(), packet.get()) >= 0, "the multiplexer refuses a packet");
            ++count;
        }
    }

    const ForeignWish wish_;
    ForeignStream stream_;
    Owned<AVFormatContext> format_;
    Owned<AVCodecContext> video_;
    Owned<AVCodecContext> audio_;
    AVStream* videoStream_ = nullptr;
    AVStream* audioStream_ = nullptr;
};

} // namespace

ForeignStream MakeForeignStream(const ForeignWish& wish) {
    return Maker(wish).Make();
}

} // namespace filters_test

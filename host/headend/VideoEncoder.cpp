#include "host/headend/VideoEncoder.h"

#include <stdexcept>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

#include "host/headend/AvcStream.h"

namespace headend {

namespace {

struct ContextFree {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameFree {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFree {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct ScalerFree {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

void Check(bool good, const char* what) {
    if (!good)
        throw std::runtime_error(std::string("picture encoder: ") + what);
}

// Leaves out supplemental information: the encoder's own message tells nothing to a receiver and names its build.
wire::ByteVector WithoutMessages(wire::ByteSpan accessUnit) {
    constexpr int kSupplemental = 6;
    wire::ByteVector out;
    out.reserve(accessUnit.size() + 16);
    for (const wire::ByteSpan unit : SplitByteStream(accessUnit)) {
        if ((unit[0] & 0x1F) == kSupplemental)
            continue;
        wire::Append32(out, 1);
        wire::AppendBytes(out, unit);
    }
    return out;
}

} // namespace

struct VideoEncoder::Impl {
    VideoSettings settings;
    std::unique_ptr<AVCodecContext, ContextFree> context;
    std::unique_ptr<AVFrame, FrameFree> frame;
    std::unique_ptr<AVPacket, PacketFree> packet;
    std::unique_ptr<SwsContext, ScalerFree> scaler;
    std::int64_t pushed = 0;
    std::vector<AccessUnit> units;

    void Drain() {
        for (;;) {
            const int status = avcodec_receive_packet(context.get(), packet.get());
            if (status == AVERROR(EAGAIN) || status == AVERROR_EOF)
                return;
            Check(status == 0, "no packet");
            units.push_back({packet->pts * 90000 / settings.framesPerSecond,
                             WithoutMessages({packet->data, static_cast<std::size_t>(packet->size)}),
                             (packet->flags & AV_PKT_FLAG_KEY) != 0});
            av_packet_unref(packet.get());
        }
    }
};

VideoEncoder::VideoEncoder(const VideoSettings& settings) : impl(std::make_unique<Impl>()) {
    impl->settings = settings;
    av_log_set_level(AV_LOG_ERROR);
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    Check(codec != nullptr, "libavcodec has no libx264");
    impl->context.reset(avcodec_alloc_context3(codec));
    AVCodecContext* context = impl->context.get();
    Check(context != nullptr, "out of memory");
    context->width = settings.width;
    context->height = settings.height;
    context->pix_fmt = AV_PIX_FMT_YUV420P;
    context->time_base = {1, settings.framesPerSecond};
    context->framerate = {settings.framesPerSecond, 1};
    context->gop_size = settings.framesPerSecond; // random access every second
    context->max_b_frames = 0;
    context->refs = 1;
    context->thread_count = 1;
    context->level = 13;
    context->bit_rate = settings.bitRate;
    context->rc_max_rate = settings.bitRate;
    context->rc_buffer_size = static_cast<int>(settings.bitRate / 2); // half a second, less than the receiver's buffer
    context->profile = FF_PROFILE_H264_CONSTRAINED_BASELINE;
    av_opt_set(context->priv_data, "preset", "veryfast", 0);
    av_opt_set(context->priv_data, "profile", "baseline", 0);
    // Parameter sets stand before each IDR. Macroblock trees stay off: libx264 164 then reads memory that it never wrote,
    // and two runs may differ.
    av_opt_set(context->priv_data, "x264-params",
               "scenecut=0:repeat-headers=1:annexb=1:force-cfr=1:mbtree=0:rc-lookahead=0", 0);
    Check(avcodec_open2(context, codec, nullptr) == 0, "libx264 refuses the settings");

    impl->packet.reset(av_packet_alloc());
    impl->frame.reset(av_frame_alloc());
    Check(impl->packet && impl->frame, "out of memory");
    impl->frame->format = context->pix_fmt;
    impl->frame->width = settings.width;
    impl->frame->height = settings.height;
    Check(av_frame_get_buffer(impl->frame.get(), 0) == 0, "out of memory");
    impl->scaler.reset(sws_getContext(settings.width, settings.height, AV_PIX_FMT_BGR0, settings.width, settings.height,
                                      AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr));
    Check(impl->scaler != nullptr, "no colour conversion");
}

VideoEncoder::~VideoEncoder() = default;

void VideoEncoder::Push(std::span<const std::uint8_t> pixels, std::size_t stride) {
    Check(pixels.size() >= stride * static_cast<std::size_t>(impl->settings.height), "picture too small");
    AVFrame* frame = impl->frame.get();
    Check(av_frame_make_writable(frame) == 0, "out of memory");
    const std::uint8_t* source[] = {pixels.data()};
    const int sourceStride[] = {static_cast<int>(stride)};
    sws_scale(impl->scaler.get(), source, sourceStride, 0, impl->settings.height, frame->data, frame->linesize);
    frame->pts = impl->pushed++;
    Check(avcodec_send_frame(impl->context.get(), frame) == 0, "picture refused");
    impl->Drain();
}

std::vector<AccessUnit> VideoEncoder::Finish() {
    Check(avcodec_send_frame(impl->context.get(), nullptr) == 0, "cannot be drained");
    impl->Drain();
    return std::move(impl->units);
}

} // namespace headend

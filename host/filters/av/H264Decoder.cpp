#include "host/filters/av/H264Decoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include <cstring>
#include <stdexcept>

namespace filters {

struct H264Decoder::State {
    AVCodecContext* context = nullptr;
    AVPacket* packet = nullptr;
    AVFrame* frame = nullptr;
    SwsContext* scaler = nullptr;

    State() {
        const AVCodec* decoder = avcodec_find_decoder(AV_CODEC_ID_H264);
        context = decoder == nullptr ? nullptr : avcodec_alloc_context3(decoder);
        packet = av_packet_alloc();
        frame = av_frame_alloc();
        if (context != nullptr) {
            context->thread_count = 1; // threads by frame would add their number in delay
            context->pkt_timebase = {1, static_cast<int>(kTicksPerSecond)};
        }
        if (context == nullptr || packet == nullptr || frame == nullptr ||
            avcodec_open2(context, decoder, nullptr) != 0) {
            Free();
            throw std::runtime_error("libavcodec has no H.264 decoder");
        }
    }
    ~State() { Free(); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void Free() {
        sws_freeContext(scaler);
        av_frame_free(&frame);
        av_packet_free(&packet);
        avcodec_free_context(&context);
    }

    void Receive(const Sink& sink) {
        while (avcodec_receive_frame(context, frame) == 0) {
            const bool sound = (frame->flags & AV_FRAME_FLAG_CORRUPT) == 0 && frame->decode_error_flags == 0;
            if (sound)
                sink(Copy());
            av_frame_unref(frame);
        }
    }

    Picture Copy() {
        Picture picture;
        picture.width = frame->width;
        picture.height = frame->height;
        picture.time = frame->best_effort_timestamp;
        const AVRational shape = frame->sample_aspect_ratio;
        picture.aspect = static_cast<double>(frame->width) / frame->height;
        if (shape.num > 0 && shape.den > 0)
            picture.aspect *= av_q2d(shape);
        picture.i420.resize(picture.LumaBytes() + 2 * picture.ChromaBytes());
        std::uint8_t* const luma = picture.i420.data();
        std::uint8_t* to[4] = {luma, luma + picture.LumaBytes(), luma + picture.LumaBytes() + picture.ChromaBytes(),
                               nullptr};
        const int half = (frame->width + 1) / 2;
        int strides[4] = {frame->width, half, half, 0};
        if (frame->format == AV_PIX_FMT_YUV420P || frame->format == AV_PIX_FMT_YUVJ420P) {
            av_image_copy(to, strides, const_cast<const std::uint8_t**>(frame->data), frame->linesize,
                          AV_PIX_FMT_YUV420P, frame->width, frame->height);
            return picture;
        }
        // Other samplings are no broadcast of this system, but a file may have them.
        scaler = sws_getCachedContext(scaler, frame->width, frame->height, static_cast<AVPixelFormat>(frame->format),
                                      frame->width, frame->height, AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr,
                                      nullptr);
        if (scaler != nullptr)
            sws_scale(scaler, frame->data, frame->linesize, 0, frame->height, to, strides);
        return picture;
    }
};

H264Decoder::H264Decoder() : state_(std::make_unique<State>()) {}

H264Decoder::~H264Decoder() = default;

bool H264Decoder::Decode(ByteSpan unit, Ticks time, const Sink& sink) {
    if (unit.empty() || av_new_packet(state_->packet, static_cast<int>(unit.size())) != 0)
        return false;
    std::memcpy(state_->packet->data, unit.data(), unit.size());
    state_->packet->pts = time;
    const int sent = avcodec_send_packet(state_->context, state_->packet);
    av_packet_unref(state_->packet);
    state_->Receive(sink);
    return sent == 0;
}

void H264Decoder::Drain(const Sink& sink) {
    if (avcodec_send_packet(state_->context, nullptr) == 0)
        state_->Receive(sink);
    Flush();
}

void H264Decoder::Flush() {
    avcodec_flush_buffers(state_->context);
}

} // namespace filters

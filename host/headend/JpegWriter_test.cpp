#include "host/headend/JpegWriter.h"

#include <cmath>
#include <memory>

#include <gtest/gtest.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include "host/headend/Canvas.h"
#include "host/headend/Slide.h"

namespace {

// Planar samples of a JPEG, by a decoder that is not ours.
struct Decoded {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> luminance;
    std::vector<std::uint8_t> chrominance;
};

Decoded Decode(wire::ByteVector bytes) {
    Decoded decoded;
    const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_MJPEG);
    AVCodecContext* context = avcodec_alloc_context3(codec);
    context->err_recognition = AV_EF_EXPLODE;
    EXPECT_EQ(avcodec_open2(context, codec, nullptr), 0);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    const int size = static_cast<int>(bytes.size());
    bytes.resize(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE);
    packet->data = bytes.data();
    packet->size = size;
    EXPECT_EQ(avcodec_send_packet(context, packet), 0);
    EXPECT_EQ(avcodec_receive_frame(context, frame), 0);
    decoded.width = frame->width;
    decoded.height = frame->height;
    for (int y = 0; y < frame->height; ++y)
        decoded.luminance.insert(decoded.luminance.end(), frame->data[0] + y * frame->linesize[0],
                                 frame->data[0] + y * frame->linesize[0] + frame->width);
    for (int y = 0; y < (frame->height + 1) / 2; ++y)
        decoded.chrominance.insert(decoded.chrominance.end(), frame->data[1] + y * frame->linesize[1],
                                   frame->data[1] + y * frame->linesize[1] + (frame->width + 1) / 2);
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&context);
    return decoded;
}

wire::ByteVector Coded(headend::Canvas& canvas, int quality, bool progressive) {
    return headend::WriteJpeg(
        {.width = canvas.Width(), .height = canvas.Height(), .quality = quality, .progressive = progressive},
        canvas.Pixels(), canvas.Stride());
}

class JpegSizes : public ::testing::TestWithParam<std::pair<int, int>> {};

TEST_P(JpegSizes, BothProcessesGiveTheSamePictureAndItIsTheRightOne) {
    headend::Canvas canvas(GetParam().first, GetParam().second);
    headend::SlideDescription slide;
    slide.title = "Title";
    slide.colour = 0x5B4B9A;
    headend::DrawSlide(canvas, slide);
    for (const int quality : {35, 80, 97}) {
        SCOPED_TRACE(quality);
        const Decoded baseline = Decode(Coded(canvas, quality, false));
        const Decoded progressive = Decode(Coded(canvas, quality, true));
        EXPECT_EQ(baseline.width, canvas.Width());
        EXPECT_EQ(baseline.height, canvas.Height());
        EXPECT_EQ(baseline.luminance, progressive.luminance);
        EXPECT_EQ(baseline.chrominance, progressive.chrominance);

        double sum = 0;
        const auto pixels = canvas.Pixels();
        for (int y = 0; y < canvas.Height(); ++y) {
            for (int x = 0; x < canvas.Width(); ++x) {
                const std::size_t at = static_cast<std::size_t>(y) * canvas.Stride() + static_cast<std::size_t>(x) * 4;
                const double wanted = 0.114 * pixels[at] + 0.587 * pixels[at + 1] + 0.299 * pixels[at + 2];
                const double got = baseline.luminance[static_cast<std::size_t>(y * canvas.Width() + x)];
                sum += (wanted - got) * (wanted - got);
            }
        }
        const double psnr = 10 * std::log10(255 * 255 / (sum / (canvas.Width() * canvas.Height())));
        // The smallest picture is nothing but edges.
        const double allowance = canvas.Width() < 32 ? 4 : 0;
        EXPECT_GT(psnr, (quality > 90 ? 40 : (quality > 50 ? 34 : 29)) - allowance);
    }
}

INSTANTIATE_TEST_SUITE_P(Jpeg, JpegSizes,
                         ::testing::Values(std::pair{320, 240}, std::pair{317, 233}, std::pair{161, 121},
                                           std::pair{17, 9}, std::pair{640, 480}));

TEST(JpegWriter, MarkersTellTheProcess) {
    headend::Canvas canvas(32, 32);
    const auto baseline = Coded(canvas, 80, false);
    const auto progressive = Coded(canvas, 80, true);
    const auto has = [](const wire::ByteVector& bytes, std::uint8_t marker) {
        for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
            if (bytes[i] == 0xFF && bytes[i + 1] == marker)
                return true;
        }
        return false;
    };
    EXPECT_TRUE(has(baseline, 0xC0));
    EXPECT_FALSE(has(baseline, 0xC2));
    EXPECT_TRUE(has(progressive, 0xC2));
    EXPECT_EQ(wire::Get16(baseline, 0), 0xFFD8u);
    EXPECT_EQ(wire::Get16(baseline, baseline.size() - 2), 0xFFD9u);
}

} // namespace

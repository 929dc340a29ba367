#include "host/filters/av/RgbConverter.h"

extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

namespace filters {

struct RgbConverter::State {
    State() = default;
    ~State() { sws_freeContext(scaler); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    SwsContext* scaler = nullptr;
    std::vector<std::uint32_t> pixels;
};

RgbConverter::RgbConverter() : state_(std::make_unique<State>()) {}

RgbConverter::~RgbConverter() = default;

std::span<const std::uint32_t> RgbConverter::Convert(const Picture& picture) {
    const int width = picture.width;
    const int height = picture.height;
    if (width <= 0 || height <= 0 || picture.i420.size() < picture.LumaBytes() + 2 * picture.ChromaBytes())
        return {};
    // BGRA in memory is 0xAARRGGBB as a number on a little-endian machine, RGB32 on any.
    state_->scaler = sws_getCachedContext(state_->scaler, width, height, AV_PIX_FMT_YUV420P, width, height,
                                          AV_PIX_FMT_RGB32, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (state_->scaler == nullptr)
        return {};
    state_->pixels.resize(picture.LumaBytes());
    const std::uint8_t* luma = picture.i420.data();
    const std::uint8_t* from[4] = {luma, luma + picture.LumaBytes(), luma + picture.LumaBytes() + picture.ChromaBytes(),
                                   nullptr};
    const int half = (width + 1) / 2;
    const int strides[4] = {width, half, half, 0};
    auto* to = reinterpret_cast<std::uint8_t*>(state_->pixels.data());
    const int toStride = width * 4;
    sws_scale(state_->scaler, from, strides, 0, height, &to, &toStride);
    for (std::uint32_t& pixel : state_->pixels)
        pixel &= 0x00FFFFFF;
    return state_->pixels;
}

} // namespace filters

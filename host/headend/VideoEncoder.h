// Pictures to H.264 as T-DMB wants it: constrained baseline, level 1.3, no B pictures, one reference, an IDR every second.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "host/headend/TsMux.h"

namespace headend {

struct VideoSettings {
    int width = 320; // even
    int height = 240;
    int framesPerSecond = 15;
    std::uint32_t bitRate = 320000;
};

// Deterministic: one thread, no clock. Throws std::runtime_error when the encoder cannot be had.
class VideoEncoder {
public:
    explicit VideoEncoder(const VideoSettings& settings);
    ~VideoEncoder();
    VideoEncoder(const VideoEncoder&) = delete;
    VideoEncoder& operator=(const VideoEncoder&) = delete;

    // One picture of 32-bit pixels in memory order B, G, R, unused (Cairo's RGB24 on a little-endian machine).
    void Push(std::span<const std::uint8_t> pixels, std::size_t stride);
    // The access units of all the pictures pushed.
    [[nodiscard]] std::vector<AccessUnit> Finish();

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace headend

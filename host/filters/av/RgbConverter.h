// Pictures to the pixels of a window, by libswscale.
#pragma once

#include "host/filters/Picture.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace filters {

class RgbConverter {
public:
    RgbConverter();
    ~RgbConverter();
    RgbConverter(const RgbConverter&) = delete;
    RgbConverter& operator=(const RgbConverter&) = delete;

    // Rows of 0x00RRGGBB without gaps, of the picture's size; valid until the next call. Empty for a picture without size.
    [[nodiscard]] std::span<const std::uint32_t> Convert(const Picture& picture);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace filters

#include "jpeg/Output.h"

#include "jpeg/RgbOutput.h"
#include "jpeg/YuvOutput.h"

#include <cstring>

namespace jpeg {

Status OpenOutput(const SourceShape& source, const Fit& fit, const Target& target, std::unique_ptr<Output>& output) {
    return target.format == kYuv420 ? OpenYuvOutput(source, fit, target, output)
                                    : OpenRgbOutput(source, fit, target, output);
}

void ClearFitted(const Fit& fit, const Target& target) {
    const Placement place = PlaceFit(fit, target.width, target.height);
    std::size_t bytesPerPixel = 1;
    std::size_t offset = place.luma;
    if (target.format == kRgb565) {
        bytesPerPixel = 2;
        offset = place.rgb565;
    } else if (target.format == kRgb24) {
        bytesPerPixel = 3;
        offset = place.rgb24;
    }
    const std::size_t stride = static_cast<std::size_t>(target.width) * bytesPerPixel;
    for (int row = 0; row < fit.height; ++row) {
        std::memset(target.pixels + offset + static_cast<std::size_t>(row) * stride, 0,
                    static_cast<std::size_t>(fit.width) * bytesPerPixel);
    }
}

void ClearChroma(const Target& target) {
    const std::size_t plane = static_cast<std::size_t>(target.width) * static_cast<std::size_t>(target.height);
    std::memset(target.pixels + plane, 128, plane);
}

} // namespace jpeg

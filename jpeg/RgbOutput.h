// RGB565 and RGB24: packed directly, or averaged by the resampling pass.
#pragma once

#include "jpeg/Output.h"

namespace jpeg {

[[nodiscard]] Status OpenRgbOutput(const SourceShape& source, const Fit& fit, const Target& target,
                                   std::unique_ptr<Output>& output);

} // namespace jpeg

// Planar YUV 4:2:0 straight from luma and chroma samples.
#pragma once

#include "jpeg/Output.h"

namespace jpeg {

[[nodiscard]] Status OpenYuvOutput(const SourceShape& source, const Fit& fit, const Target& target,
                                   std::unique_ptr<Output>& output);

} // namespace jpeg

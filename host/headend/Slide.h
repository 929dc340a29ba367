// Slides for the radio stations, drawn and coded as JPEG, or taken from a file as they are.
#pragma once

#include <string>
#include <vector>

#include "host/headend/Canvas.h"
#include "host/headend/Description.h"
#include "host/wire/Bytes.h"

namespace headend {

[[nodiscard]] std::vector<std::string> SlideStyles();

void DrawSlide(Canvas& canvas, const SlideDescription& slide);

// The file that is broadcast. Throws std::runtime_error when a file cannot be read.
[[nodiscard]] wire::ByteVector MakeSlideFile(const SlideDescription& slide);

} // namespace headend

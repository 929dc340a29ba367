// What moves in a station's picture, behind its name and clock.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/headend/Canvas.h"

namespace headend {

class Backdrop {
public:
    virtual ~Backdrop() = default;
    // The picture at that many seconds, the same every time.
    virtual void Draw(Canvas& canvas, double seconds) = 0;
};

[[nodiscard]] std::vector<std::string> BackdropNames();
// `name` is one of them.
[[nodiscard]] std::unique_ptr<Backdrop> MakeBackdrop(const std::string& name, int width, int height);

} // namespace headend

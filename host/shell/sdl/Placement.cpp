#include "host/shell/sdl/Placement.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace shell::sdl {

namespace {

// `value` * `numerator` / `denominator`, downwards also below zero.
int Scale(int value, int numerator, int denominator) {
    const std::int64_t product = std::int64_t{value} * numerator;
    const std::int64_t quotient = product / denominator;
    return static_cast<int>(product % denominator < 0 ? quotient - 1 : quotient);
}

} // namespace

Box FitInside(const Box& outer, double shape) {
    if (!(shape > 0.01 && shape < 100)) {
        return outer;
    }
    const int width = std::min(outer.width, static_cast<int>(std::lround(outer.height * shape)));
    const int height = std::min(outer.height, static_cast<int>(std::lround(outer.width / shape)));
    return {outer.x + (outer.width - width) / 2, outer.y + (outer.height - height) / 2, width, height};
}

Box PlaceScreen(int outputWidth, int outputHeight) {
    return FitInside({0, 0, outputWidth, outputHeight}, static_cast<double>(kScreenWidth) / kScreenHeight);
}

Box ToOutput(const Box& part, const Box& screen, int scale) {
    const int width = kScreenWidth * scale;
    const int height = kScreenHeight * scale;
    const int left = Scale(part.x, screen.width, width);
    const int top = Scale(part.y, screen.height, height);
    const int right = Scale(part.x + part.width, screen.width, width);
    const int bottom = Scale(part.y + part.height, screen.height, height);
    return {screen.x + left, screen.y + top, right - left, bottom - top};
}

int ScaleFor(int outputWidth, int outputHeight) {
    const Box screen = PlaceScreen(outputWidth, outputHeight);
    return screen.width * 4 > kScreenWidth * 5 ? 2 : 1;
}

Point ToScreen(const Point& inWindow, int windowWidth, int windowHeight) {
    const Box screen = PlaceScreen(windowWidth, windowHeight);
    if (screen.width < 1 || screen.height < 1) {
        return {-1, -1};
    }
    return {Scale(inWindow.x - screen.x, kScreenWidth, screen.width),
            Scale(inWindow.y - screen.y, kScreenHeight, screen.height)};
}

} // namespace shell::sdl

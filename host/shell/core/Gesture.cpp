#include "host/shell/core/Gesture.h"

#include <algorithm>
#include <cstdlib>

namespace shell {

namespace {

constexpr LONG kScreenWidth = 800, kScreenHeight = 480;
constexpr LONG kTremble = 12;    // pixels
constexpr LONG kCorner = 48;     // side of the corner that changes the size
constexpr LONG kTitleBar = 60;   // height of the bar where the way down begins
constexpr LONG kLongEnough = 96; // of that way

} // namespace

bool IsDrag(POINT from, POINT to) {
    return std::abs(to.x - from.x) > kTremble || std::abs(to.y - from.y) > kTremble;
}

Drag DragOfSmall(const RECT& place, POINT from) {
    const bool onCorner = from.x >= place.right - kCorner && from.y >= place.bottom - kCorner;
    return onCorner ? Drag::SizeSmall : Drag::MoveSmall;
}

bool MakesSmall(POINT from, POINT to) {
    const LONG down = to.y - from.y;
    return from.y < kTitleBar && down >= kLongEnough && down >= std::abs(to.x - from.x);
}

RECT MovedBy(const RECT& place, LONG dx, LONG dy) {
    const LONG width = place.right - place.left;
    const LONG height = place.bottom - place.top;
    const LONG left = std::clamp<LONG>(place.left + dx, 0, std::max<LONG>(kScreenWidth - width, 0));
    const LONG top = std::clamp<LONG>(place.top + dy, 0, std::max<LONG>(kScreenHeight - height, 0));
    return {left, top, left + width, top + height};
}

RECT SizedTo(const RECT& place, POINT finger) {
    const auto [small, large] = kSmallSizes;
    const auto distance = [&](const SIZE& size) {
        return std::abs(finger.x - place.left - size.cx) + std::abs(finger.y - place.top - size.cy);
    };
    const SIZE& size = distance(large) < distance(small) ? large : small;
    return MovedBy({place.left, place.top, place.left + size.cx, place.top + size.cy}, 0, 0);
}

int RowsDragged(LONG fromY, LONG toY, LONG rowHeight) {
    if (rowHeight <= 0) {
        return 0;
    }
    const LONG way = fromY - toY;
    return (way + (way < 0 ? -rowHeight : rowHeight) / 2) / rowHeight;
}

} // namespace shell

// What a finger that moves means. Pure: points and rectangles in, decisions out; all of them are the screen's.
#pragma once

#include "platform/types.h"

namespace shell {

// What a drag does, decided by where it begins.
enum class Drag {
    None,
    MakeSmall,  // from the title bar downwards: the view becomes small
    MoveSmall,  // the small window follows
    SizeSmall,  // from its lower right corner: it takes the other of its two sizes
    ScrollList, // the rows follow
};

// The small window's two sizes. The larger one is wide enough for the long texts.
inline constexpr SIZE kSmallSizes[2] = {{320, 240}, {480, 360}};

// A finger trembles: only further than this from where it touched is it a drag.
[[nodiscard]] bool IsDrag(POINT from, POINT to);
// What a drag that begins here does to the small window at this place.
[[nodiscard]] Drag DragOfSmall(const RECT& place, POINT from);
// Does this path take the full view to its small form?
[[nodiscard]] bool MakesSmall(POINT from, POINT to);
// The place so far away, pushed back onto the screen.
[[nodiscard]] RECT MovedBy(const RECT& place, LONG dx, LONG dy);
// The place with the size whose corner is nearer to the finger, pushed back onto the screen.
[[nodiscard]] RECT SizedTo(const RECT& place, POINT finger);
// How many rows a list has moved up when the finger went from one height to another, to the nearest whole row.
[[nodiscard]] int RowsDragged(LONG fromY, LONG toY, LONG rowHeight);

} // namespace shell

// Draws the skin's pictures, with their transparency, onto a context.
#pragma once

#include "host/shell/gdi/Context.h"

namespace shell {

// Draws the picture stretched into `target`; with `border` above 0 the outer pixels keep their size and only the middle is
// stretched, so that one picture fits buttons of every size.
void DrawPicture(Context& context, const Surface& picture, const RECT& target, int border);
// Draws the picture in its own size, centred in `target`; opacity 0 to 1.
void DrawCentred(Context& context, const Surface& picture, const RECT& target, double opacity = 1.0);
// Makes the part of the context fully transparent (colour 0) or fills it with an opaque colour.
void FillPixels(Context& context, const RECT& target, std::uint32_t pixel);

// Lays a picture over another one, with its transparency.
void DrawOver(Surface& target, const Surface& picture, int x, int y);

} // namespace shell

// The marker of a row of options: a widget whose skin gives one anchor point per option.
#pragma once

#include "platform/velshell/GEngine.h"

// Moves the widget's top-left corner to the anchor of an option, keeping its size. A missing widget, missing anchors or an option
// without one change nothing.
void PlaceSelector(const GFactory& factory, UINT id, UINT option, int redraw);

// The top-left corner that centres a window of the given size on a rectangle; halves round towards minus infinity.
[[nodiscard]] POINT CentreOn(const RECT& rect, int width, int height);

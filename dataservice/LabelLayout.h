// Which of the label texts fit into their area.
#pragma once

#include <span>

#include "platform/types.h"

// What goes before every text.
inline constexpr const WCHAR* kLabelPrefix = WTEXT("\u25B6 ");

// The first text to draw, given the size of each (prefix included) in the order oldest to newest. Texts are taken from the newest
// back while the lines they need (width over area width, rounded up) fit. When not even the newest fits, the answer is 0 on
// purpose: everything is drawn and the area clips it.
[[nodiscard]] std::size_t FirstLabelToDraw(std::span<const SIZE> extents, int areaWidth, int areaHeight);

// The texts from `first` on, each with its prefix and a line break, the last one too.
[[nodiscard]] WString JoinLabels(std::span<const WString> history, std::size_t first);

// The texts of a radio service: from broadcast bytes to the short history on the screen.
#pragma once

#include <span>
#include <vector>

#include "platform/types.h"

inline constexpr std::size_t kLabelHistory = 4;

// A UCS-2 text, high byte first. An odd last byte is ignored; the text ends at its first zero character.
[[nodiscard]] WString DecodeUcs2Label(std::span<const BYTE> bytes);

// Adds a text as the newest of at most four; the oldest leaves. False, with nothing changed, when the text is empty or equal to
// the newest entry.
[[nodiscard]] bool AppendLabel(std::vector<WString>& history, const WString& text);

// Where a text breaks into lines, and which "&" it loses: decisions only, no font.
#pragma once

#include "platform/types.h"

#include <functional>
#include <string_view>
#include <vector>

namespace shell {

// Text as it is shown, and the unit that is underlined (npos: none). A single "&" vanishes and marks the character that
// follows it; "&&" shows one.
struct PrefixedText {
    WString text;
    std::size_t underlined = WString::npos;
};
[[nodiscard]] PrefixedText ResolvePrefixes(WStringView text);

// A line as a part of the text: first unit and number of units. The blanks at a break belong to no line.
struct TextLine {
    std::size_t start = 0;
    std::size_t length = 0;
    friend constexpr bool operator==(const TextLine&, const TextLine&) = default;
};

using MeasureText = std::function<int(WStringView)>;

// Lines end at "\n"; with `wordBreak` also before a word, or between two Hangul syllables (or other characters that are
// written without blanks), when the next part would pass `width`. A word wider than `width` stays whole. A trailing "\n" adds
// no line.
[[nodiscard]] std::vector<TextLine> BreakLines(WStringView text, int width, bool wordBreak, const MeasureText& measure);

} // namespace shell

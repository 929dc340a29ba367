#include "host/shell/gdi/TextLines.h"

namespace shell {

namespace {

constexpr bool IsBlank(WCHAR c) {
    return c == ' ' || c == '\t';
}

// Characters between which a line may break without a blank: Hangul syllables and letters, ideographs, Kana.
constexpr bool BreaksFreely(WCHAR c) {
    return (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0x1100 && c <= 0x11FF) || (c >= 0x3130 && c <= 0x318F) ||
           (c >= 0x3041 && c <= 0x30FF) || (c >= 0x3400 && c <= 0x4DBF) || (c >= 0x4E00 && c <= 0x9FFF);
}

// May a line end before unit `i` of the text?
bool MayBreakBefore(WStringView text, std::size_t i) {
    if (IsBlank(text[i])) {
        return false;
    }
    return IsBlank(text[i - 1]) || (BreaksFreely(text[i - 1]) && BreaksFreely(text[i]));
}

std::size_t WithoutTrailingBlanks(WStringView text, std::size_t start, std::size_t end) {
    while (end > start && IsBlank(text[end - 1])) {
        --end;
    }
    return end;
}

// The lines of one paragraph [start, end).
void BreakParagraph(WStringView text, std::size_t start, std::size_t end, int width, const MeasureText& measure,
                    std::vector<TextLine>& lines) {
    std::size_t fits = start; // a break opportunity up to which everything fits; start: none yet
    for (std::size_t i = start + 1; i <= end; ++i) {
        if (i < end && !MayBreakBefore(text, i)) {
            continue;
        }
        const std::size_t shown = WithoutTrailingBlanks(text, start, i);
        if (fits > start && measure(text.substr(start, shown - start)) > width) {
            lines.push_back({start, WithoutTrailingBlanks(text, start, fits) - start});
            start = fits;
        }
        fits = i;
    }
    lines.push_back({start, WithoutTrailingBlanks(text, start, end) - start});
}

} // namespace

PrefixedText ResolvePrefixes(WStringView text) {
    PrefixedText result;
    result.text.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '&') {
            if (i + 1 == text.size()) {
                break;
            }
            ++i;
            if (text[i] != '&') {
                result.underlined = result.text.size();
            }
        }
        result.text += text[i];
    }
    return result;
}

std::vector<TextLine> BreakLines(WStringView text, int width, bool wordBreak, const MeasureText& measure) {
    std::vector<TextLine> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t newline = text.find(u'\n', start);
        std::size_t end = newline == WStringView::npos ? text.size() : newline;
        const std::size_t next = newline == WStringView::npos ? text.size() : newline + 1;
        if (newline != WStringView::npos && end > start && text[end - 1] == '\r') {
            --end;
        }
        if (wordBreak && end > start) {
            BreakParagraph(text, start, end, width, measure, lines);
        } else {
            lines.push_back({start, end - start});
        }
        start = next;
    }
    return lines;
}

} // namespace shell

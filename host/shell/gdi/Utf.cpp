#include "host/shell/gdi/Utf.h"

namespace shell {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// Takes one character from the front of a text that is not empty.
char32_t TakeUtf8(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
    if (length <= 1) {
        text.remove_prefix(1);
        return length == 1 ? first : kReplacement;
    }
    char32_t value = first & (0xFFu >> (length + 1));
    std::size_t taken = 1;
    while (taken < length && taken < text.size() && (static_cast<unsigned char>(text[taken]) & 0xC0) == 0x80) {
        value = (value << 6) | (static_cast<unsigned char>(text[taken]) & 0x3Fu);
        ++taken;
    }
    text.remove_prefix(taken);
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool wrong = taken < length || value < kLeast[length] || value > 0x10FFFF || (value >= 0xD800 && value < 0xE000);
    return wrong ? kReplacement : value;
}

} // namespace

std::string ToUtf8(WStringView text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        const char32_t next = i + 1 < text.size() ? text[i + 1] : 0;
        if (unit >= 0xD800 && unit < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
            AppendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
            ++i;
        } else {
            AppendUtf8(out, unit >= 0xD800 && unit < 0xE000 ? kReplacement : unit);
        }
    }
    return out;
}

WString ToWide(std::string_view text) {
    WString out;
    out.reserve(text.size());
    while (!text.empty()) {
        const char32_t c = TakeUtf8(text);
        if (c >= 0x10000) {
            out += static_cast<WCHAR>(0xD800 + ((c - 0x10000) >> 10));
            out += static_cast<WCHAR>(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            out += static_cast<WCHAR>(c);
        }
    }
    return out;
}

} // namespace shell

// The skin that is shipped, to be looked at by rule: can it be read at arm's length, touched with a thumb, and understood in both
// languages?
#pragma once

#include "host/ce/Text.h"
#include "host/shell/gdi/TextLines.h"
#include "host/shell/skin/SkinLibrary.h"
#include "tests/support/Places.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace shell {

inline const WString kResources[] = {u"VelMain",     u"VelDMB",       u"VelDMBSettings", u"VelNotice",
                                     u"VelDMBDebug", u"VelDMBChList", u"VelMsgBox"};
inline constexpr Language kLanguages[] = {Language::Korean, Language::English};

class ProductSkin : public testing::Test {
protected:
    [[nodiscard]] const Skin& Of(WStringView resource) const { return *library.Find(resource); }
    [[nodiscard]] const ElementDescription& ElementOf(WStringView resource, UINT id) const {
        const auto& elements = Of(resource).description.elements;
        return *std::find_if(elements.begin(), elements.end(), [id](const auto& e) { return e.id == id; });
    }
    [[nodiscard]] static FontSpec FontOf(const Skin& skin, const ElementDescription& element) {
        const FontDescription& font = skin.description.fonts.at(element.font.empty() ? "default" : element.font);
        return {font.family, font.pixels, font.bold};
    }
    // Where an element's text lies in it: its own area, below its icon, or all of it; without its margin.
    [[nodiscard]] static RECT TextPart(const ElementDescription& element, std::size_t face) {
        RECT part = {0, 0, element.rect.right - element.rect.left, element.rect.bottom - element.rect.top};
        if (!IsRectEmpty(&element.textArea)) {
            part = element.textArea;
        } else if (!element.faces[face].icon.empty()) {
            part.top += part.bottom * 6 / 10;
        }
        part.left += element.margin;
        return part;
    }
    // Empty, or what sticks out.
    std::string Overflow(const FontSpec& font, const WString& text, int width, int height, bool wrap) {
        const auto measure = [&](WStringView part) { return static_cast<int>(gdi.text.Measure(font, part).cx); };
        const auto lines = BreakLines(text, width, wrap, measure);
        const int needed = static_cast<int>(lines.size()) * gdi.text.LineHeight(font);
        if (needed > height) {
            return ce::ToUtf8(text) + ": " + std::to_string(needed) + " of " + std::to_string(height) + " pixels high";
        }
        for (const TextLine& line : lines) {
            const int wide = measure(WStringView(text).substr(line.start, line.length));
            if (wide > width) {
                return ce::ToUtf8(text) + ": " + std::to_string(wide) + " of " + std::to_string(width) + " pixels wide";
            }
        }
        return {};
    }
    // The same for an element of a skin.
    std::string OverflowIn(WStringView resource, UINT id, const WString& text) {
        const ElementDescription& element = ElementOf(resource, id);
        const RECT part = TextPart(element, 0);
        return Overflow(FontOf(Of(resource), element), text, part.right - part.left, part.bottom - part.top,
                        element.wrap);
    }
    [[nodiscard]] WString Text(WStringView resource, WORD number, Language language) const {
        return library.Text(resource, number, language);
    }

    GdiState gdi;
    const std::filesystem::path folder = std::filesystem::path(testing_support::BinaryDir()) / "skin";
    const SkinLibrary library{folder, gdi};
};

} // namespace shell

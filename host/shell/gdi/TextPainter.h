// Measures and draws single lines of text.
#pragma once

#include "platform/types.h"

#include <memory>
#include <string>

using cairo_t = struct _cairo;

namespace shell {

// A font by family name and size in pixels. Characters it lacks come from the system's other fonts.
struct FontSpec {
    std::string family;
    int pixels = 16;
    bool bold = false;
    friend bool operator==(const FontSpec&, const FontSpec&) = default;
};

class TextPainter {
public:
    TextPainter();
    ~TextPainter();
    TextPainter(const TextPainter&) = delete;
    TextPainter& operator=(const TextPainter&) = delete;

    // Width of one line and height of the font; line ends count as glyphs.
    [[nodiscard]] SIZE Measure(const FontSpec& font, WStringView text);
    [[nodiscard]] int LineHeight(const FontSpec& font);
    // Draws one line with its upper left corner at (x, y) in the context's current source colour. `underlined` is the unit that
    // gets a line under it, npos for none.
    void Draw(cairo_t* target, const FontSpec& font, WStringView text, int x, int y,
              std::size_t underlined = WString::npos);

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace shell

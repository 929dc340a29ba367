#include "host/shell/gdi/TextPainter.h"

#include "host/ce/Text.h"

#include <pango/pangocairo.h>

namespace shell {

namespace {

template <typename Object> struct Unref {
    void operator()(Object* object) const { g_object_unref(object); }
};
template <typename Object> using Owned = std::unique_ptr<Object, Unref<Object>>;

} // namespace

struct TextPainter::Impl {
    Owned<PangoFontMap> fonts{pango_cairo_font_map_new()};
    Owned<PangoContext> context{pango_font_map_create_context(fonts.get())};

    Impl() {
        // Unhinted outlines: the same picture whatever the desktop's settings are.
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_ON);
        pango_cairo_context_set_font_options(context.get(), options);
        cairo_font_options_destroy(options);
        pango_context_set_language(context.get(), pango_language_from_string("ko"));
    }

    Owned<PangoLayout> MakeLayout(const FontSpec& font, WStringView text) {
        PangoFontDescription* description = pango_font_description_new();
        pango_font_description_set_family(description, font.family.c_str());
        pango_font_description_set_absolute_size(description, static_cast<double>(font.pixels) * PANGO_SCALE);
        pango_font_description_set_weight(description, font.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
        Owned<PangoLayout> layout(pango_layout_new(context.get()));
        pango_layout_set_font_description(layout.get(), description);
        pango_font_description_free(description);
        pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
        const std::string utf8 = ce::ToUtf8(text);
        pango_layout_set_text(layout.get(), utf8.c_str(), static_cast<int>(utf8.size()));
        return layout;
    }
};

TextPainter::TextPainter() : impl(std::make_unique<Impl>()) {}
TextPainter::~TextPainter() = default;

SIZE TextPainter::Measure(const FontSpec& font, WStringView text) {
    const int height = LineHeight(font);
    if (text.empty()) {
        return {0, height};
    }
    int width = 0;
    pango_layout_get_pixel_size(impl->MakeLayout(font, text).get(), &width, nullptr);
    return {width, height};
}

int TextPainter::LineHeight(const FontSpec& font) {
    // The height of a Hangul syllable's line, so that Latin and Korean lines are equally high.
    int height = 0;
    pango_layout_get_pixel_size(impl->MakeLayout(font, u"\uAC00").get(), nullptr, &height);
    return height;
}

void TextPainter::Draw(cairo_t* target, const FontSpec& font, WStringView text, int x, int y, std::size_t underlined) {
    const Owned<PangoLayout> layout = impl->MakeLayout(font, text);
    if (underlined < text.size()) {
        PangoAttribute* line = pango_attr_underline_new(PANGO_UNDERLINE_SINGLE);
        line->start_index = static_cast<guint>(ce::ToUtf8(text.substr(0, underlined)).size());
        line->end_index = static_cast<guint>(ce::ToUtf8(text.substr(0, underlined + 1)).size());
        PangoAttrList* attributes = pango_attr_list_new();
        pango_attr_list_insert(attributes, line);
        pango_layout_set_attributes(layout.get(), attributes);
        pango_attr_list_unref(attributes);
    }
    const int baseline = pango_layout_get_baseline(impl->MakeLayout(font, u"\uAC00").get());
    cairo_move_to(target, x, y + static_cast<double>(baseline - pango_layout_get_baseline(layout.get())) / PANGO_SCALE);
    pango_cairo_update_layout(target, layout.get());
    pango_cairo_show_layout(target, layout.get());
}

} // namespace shell

#include "host/headend/Canvas.h"

#include <numbers>

#include <cairo.h>
#include <pango/pangocairo.h>

namespace headend {

namespace {

constexpr double kTurn = 2 * std::numbers::pi;

void SetColour(cairo_t* context, Colour colour) {
    cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, colour.alpha);
}

} // namespace

Colour Mix(Colour from, Colour to, double share) {
    const auto mix = [share](double a, double b) { return a + (b - a) * share; };
    return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue), mix(from.alpha, to.alpha)};
}

Canvas::Canvas(int canvasWidth, int canvasHeight)
    : width(canvasWidth), height(canvasHeight),
      surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, canvasWidth, canvasHeight)),
      context(cairo_create(surface)) {}

Canvas::~Canvas() {
    cairo_destroy(context);
    cairo_surface_destroy(surface);
}

std::span<const std::uint8_t> Canvas::Pixels() {
    cairo_surface_flush(surface);
    return {cairo_image_surface_get_data(surface), Stride() * static_cast<std::size_t>(height)};
}

std::size_t Canvas::Stride() const {
    return static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
}

bool Canvas::SavePng(const std::string& path) {
    return cairo_surface_write_to_png(surface, path.c_str()) == CAIRO_STATUS_SUCCESS;
}

void Canvas::Rectangle(double x, double y, double w, double h, Colour colour) {
    SetColour(context, colour);
    cairo_rectangle(context, x, y, w, h);
    cairo_fill(context);
}

void Canvas::RoundRectangle(double x, double y, double w, double h, double radius, Colour colour) {
    SetColour(context, colour);
    cairo_new_path(context);
    cairo_arc(context, x + w - radius, y + radius, radius, -kTurn / 4, 0);
    cairo_arc(context, x + w - radius, y + h - radius, radius, 0, kTurn / 4);
    cairo_arc(context, x + radius, y + h - radius, radius, kTurn / 4, kTurn / 2);
    cairo_arc(context, x + radius, y + radius, radius, kTurn / 2, kTurn * 3 / 4);
    cairo_close_path(context);
    cairo_fill(context);
}

void Canvas::Gradient(double x, double y, double w, double h, Colour top, Colour bottom) {
    cairo_pattern_t* pattern = cairo_pattern_create_linear(0, y, 0, y + h);
    cairo_pattern_add_color_stop_rgba(pattern, 0, top.red, top.green, top.blue, top.alpha);
    cairo_pattern_add_color_stop_rgba(pattern, 1, bottom.red, bottom.green, bottom.blue, bottom.alpha);
    cairo_set_source(context, pattern);
    cairo_rectangle(context, x, y, w, h);
    cairo_fill(context);
    cairo_pattern_destroy(pattern);
}

void Canvas::Disc(double x, double y, double radius, Colour colour) {
    SetColour(context, colour);
    cairo_new_path(context); // Pango leaves its point behind
    cairo_arc(context, x, y, radius, 0, kTurn);
    cairo_fill(context);
}

void Canvas::Glow(double x, double y, double radius, Colour colour) {
    cairo_pattern_t* pattern = cairo_pattern_create_radial(x, y, 0, x, y, radius);
    cairo_pattern_add_color_stop_rgba(pattern, 0, colour.red, colour.green, colour.blue, colour.alpha);
    cairo_pattern_add_color_stop_rgba(pattern, 1, colour.red, colour.green, colour.blue, 0);
    cairo_set_source(context, pattern);
    cairo_new_path(context); // Pango leaves its point behind
    cairo_arc(context, x, y, radius, 0, kTurn);
    cairo_fill(context);
    cairo_pattern_destroy(pattern);
}

void Canvas::Ring(double x, double y, double radius, double lineWidth, Colour colour) {
    SetColour(context, colour);
    cairo_set_line_width(context, lineWidth);
    cairo_new_path(context); // Pango leaves its point behind
    cairo_arc(context, x, y, radius, 0, kTurn);
    cairo_stroke(context);
}

void Canvas::Line(double x1, double y1, double x2, double y2, double lineWidth, Colour colour) {
    SetColour(context, colour);
    cairo_set_line_width(context, lineWidth);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    cairo_move_to(context, x1, y1);
    cairo_line_to(context, x2, y2);
    cairo_stroke(context);
}

Extent Canvas::Text(double x, double y, const std::string& utf8, const TextStyle& style) {
    PangoLayout* layout = pango_cairo_create_layout(context);
    PangoFontDescription* font = pango_font_description_from_string("NanumGothic");
    pango_font_description_set_weight(font, style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_absolute_size(font, style.size * PANGO_SCALE);
    pango_layout_set_font_description(layout, font);
    pango_font_description_free(font);
    if (style.width > 0) {
        pango_layout_set_width(layout, static_cast<int>(style.width * PANGO_SCALE));
        pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
        if (!style.wrap) {
            pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_END);
            pango_layout_set_height(layout, -1);
        }
        pango_layout_set_alignment(layout, style.align > 0.75   ? PANGO_ALIGN_RIGHT
                                           : style.align > 0.25 ? PANGO_ALIGN_CENTER
                                                                : PANGO_ALIGN_LEFT);
    }
    pango_layout_set_text(layout, utf8.c_str(), static_cast<int>(utf8.size()));
    int textWidth = 0;
    int textHeight = 0;
    pango_layout_get_pixel_size(layout, &textWidth, &textHeight);
    const double left = x - (style.width > 0 ? style.width : textWidth) * style.align;
    if (style.shadow) {
        SetColour(context, Colour::Rgb(0x000000, 0.55 * style.colour.alpha));
        cairo_move_to(context, left + 1, y + 1);
        pango_cairo_show_layout(context, layout);
    }
    SetColour(context, style.colour);
    cairo_move_to(context, left, y);
    pango_cairo_show_layout(context, layout);
    g_object_unref(layout);
    return {static_cast<double>(textWidth), static_cast<double>(textHeight)};
}

void Canvas::Paint(Canvas& source, double x, double y) {
    cairo_set_source_surface(context, source.surface, x, y);
    cairo_paint(context);
}

} // namespace headend

// A picture in memory and the few drawing words that scenes and slides need, over Cairo and Pango.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;

namespace headend {

struct Colour {
    double red = 0; // 0..1
    double green = 0;
    double blue = 0;
    double alpha = 1;

    // 0xRRGGBB
    static constexpr Colour Rgb(std::uint32_t value, double alpha = 1) {
        return {(value >> 16 & 0xFF) / 255.0, (value >> 8 & 0xFF) / 255.0, (value & 0xFF) / 255.0, alpha};
    }
    [[nodiscard]] constexpr Colour Faded(double factor) const { return {red, green, blue, alpha * factor}; }
};

[[nodiscard]] Colour Mix(Colour from, Colour to, double share);

struct TextStyle {
    double size = 16; // pixels
    bool bold = false;
    Colour colour = Colour::Rgb(0xFFFFFF);
    double width = 0;  // wrap or cut at this width; 0 = one line, as long as it is
    bool wrap = false; // else the end of a long line becomes an ellipsis
    double align = 0;  // 0 left, 0.5 centre, 1 right of x
    bool shadow = false;
};

struct Extent {
    double width = 0;
    double height = 0;
};

class Canvas {
public:
    Canvas(int width, int height);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    [[nodiscard]] int Width() const { return width; }
    [[nodiscard]] int Height() const { return height; }
    [[nodiscard]] cairo_t* Cairo() const { return context; }
    // 32-bit pixels in memory order B, G, R, unused.
    [[nodiscard]] std::span<const std::uint8_t> Pixels();
    [[nodiscard]] std::size_t Stride() const;
    [[nodiscard]] bool SavePng(const std::string& path);

    void Rectangle(double x, double y, double w, double h, Colour colour);
    void RoundRectangle(double x, double y, double w, double h, double radius, Colour colour);
    // From top to bottom.
    void Gradient(double x, double y, double w, double h, Colour top, Colour bottom);
    void Disc(double x, double y, double radius, Colour colour);
    // A disc that fades to nothing at its rim.
    void Glow(double x, double y, double radius, Colour colour);
    void Ring(double x, double y, double radius, double lineWidth, Colour colour);
    void Line(double x1, double y1, double x2, double y2, double lineWidth, Colour colour);
    // y is the top of the first line. Returns the size of what was drawn.
    Extent Text(double x, double y, const std::string& utf8, const TextStyle& style);
    // Copies another picture here, for backgrounds that are painted once.
    void Paint(Canvas& source, double x, double y);

private:
    int width;
    int height;
    cairo_surface_t* surface;
    cairo_t* context;
};

} // namespace headend

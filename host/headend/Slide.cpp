#include "host/headend/Slide.h"

#include <cmath>
#include <fstream>
#include <iterator>
#include <numbers>
#include <sstream>
#include <stdexcept>

#include <cairo.h>

#include "host/headend/JpegWriter.h"

namespace headend {

namespace {

// All styles are drawn on 320x240 and scaled to what is wanted.
constexpr double kWidth = 320;
constexpr double kHeight = 240;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// A record in its sleeve, with what is playing.
void DrawCover(Canvas& canvas, const SlideDescription& slide, Colour colour) {
    canvas.Gradient(0, 0, kWidth, kHeight, Mix(colour, Colour::Rgb(0x000000), 0.35),
                    Mix(colour, Colour::Rgb(0x000000), 0.8));
    canvas.Glow(60, 40, 190, Mix(colour, Colour::Rgb(0xFFFFFF), 0.25).Faded(0.55));
    const double cx = 148;
    const double cy = 96;
    canvas.Disc(cx, cy, 66, Colour::Rgb(0x111111));
    for (int i = 0; i < 8; ++i)
        canvas.Ring(cx, cy, 30 + i * 4.5, 0.7, Colour::Rgb(0xFFFFFF, 0.12));
    cairo_t* c = canvas.Cairo();
    for (const double angle : {-0.7, 2.44}) { // light on the grooves
        cairo_new_path(c);
        cairo_move_to(c, cx, cy);
        cairo_arc(c, cx, cy, 64, angle, angle + 0.28);
        cairo_close_path(c);
        cairo_set_source_rgba(c, 1, 1, 1, 0.13);
        cairo_fill(c);
    }
    canvas.Disc(cx, cy, 22, Mix(colour, Colour::Rgb(0xFFFFFF), 0.45));
    canvas.Disc(cx, cy, 3, Colour::Rgb(0x111111));
    // The sleeve covers its left half.
    canvas.RoundRectangle(26, 30, 124, 132, 3, Mix(colour, Colour::Rgb(0xFFFFFF), 0.12));
    canvas.Gradient(26, 30, 124, 132, Colour::Rgb(0xFFFFFF, 0.18), Colour::Rgb(0x000000, 0.25));
    cairo_save(c);
    cairo_rectangle(c, 26, 30, 124, 132);
    cairo_clip(c);
    for (int i = 0; i < 5; ++i)
        canvas.Ring(88, 132, 22 + i * 15, 5, Mix(colour, Colour::Rgb(0xFFE9B0), 0.3 + 0.14 * i).Faded(0.9));
    canvas.Rectangle(26, 132, 124, 30, Mix(colour, Colour::Rgb(0x000000), 0.45));
    canvas.Disc(88, 132, 16, Colour::Rgb(0xFFE9B0));
    canvas.Rectangle(26, 133, 124, 29, Mix(colour, Colour::Rgb(0x000000), 0.45));
    for (int i = 0; i < 5; ++i)
        canvas.Rectangle(88 - 22 + i * 3, 138 + i * 5, 44 - i * 6, 1.6, Colour::Rgb(0xFFE9B0, 0.8 - 0.13 * i));
    cairo_restore(c);
    canvas.Text(160, 184, slide.title, {.size = 21, .bold = true, .width = 296, .align = 0.5, .shadow = true});
    canvas.Text(160, 211, slide.text, {.size = 14, .colour = Colour::Rgb(0xFFFFFF, 0.8), .width = 296, .align = 0.5});
    canvas.Text(228, 60, "ON AIR", {.size = 11, .bold = true, .colour = Colour::Rgb(0xFFE9B0)});
    for (int i = 0; i < 12; ++i) {
        const double high = 10 + 26 * std::abs(std::sin(i * 1.7 + 0.6));
        canvas.RoundRectangle(229 + i * 6.0, 122 - high, 3.6, high, 1.5, Colour::Rgb(0xFFFFFF, 0.75));
    }
}

// Sun, clouds, and a line for each "place|degrees".
void DrawWeather(Canvas& canvas, const SlideDescription& slide, Colour colour) {
    canvas.Gradient(0, 0, kWidth, kHeight, colour, Mix(colour, Colour::Rgb(0xFFFFFF), 0.55));
    canvas.Glow(246, 62, 110, Colour::Rgb(0xFFF4B8, 0.9));
    for (int i = 0; i < 12; ++i) {
        const double a = i * std::numbers::pi / 6;
        canvas.Line(246 + 40 * std::cos(a), 62 + 40 * std::sin(a), 246 + 50 * std::cos(a), 62 + 50 * std::sin(a), 4,
                    Colour::Rgb(0xFFD54A));
    }
    canvas.Disc(246, 62, 31, Colour::Rgb(0xFFD54A));
    const auto cloud = [&](double x, double y, double s, double alpha) {
        canvas.Disc(x, y, 16 * s, Colour::Rgb(0xFFFFFF, alpha));
        canvas.Disc(x + 20 * s, y - 9 * s, 20 * s, Colour::Rgb(0xFFFFFF, alpha));
        canvas.Disc(x + 42 * s, y, 15 * s, Colour::Rgb(0xFFFFFF, alpha));
        canvas.RoundRectangle(x - 2 * s, y - 2 * s, 48 * s, 18 * s, 8 * s, Colour::Rgb(0xFFFFFF, alpha));
    };
    cloud(252, 92, 0.9, 1);
    cloud(178, 30, 0.5, 0.6);
    canvas.Text(18, 20, slide.title, {.size = 24, .bold = true, .width = 190, .shadow = true});
    canvas.RoundRectangle(14, 124, 292, 100, 10, Colour::Rgb(0xFFFFFF, 0.82));
    const auto lines = Lines(slide.text);
    for (std::size_t i = 0; i < lines.size() && i < 6; ++i) {
        const std::size_t bar = lines[i].find('|');
        const double x = 28 + static_cast<double>(i % 2) * 142;
        const double y = 134 + static_cast<double>(i / 2) * 28;
        canvas.Text(x, y, lines[i].substr(0, bar), {.size = 17, .colour = Colour::Rgb(0x1E3148), .width = 90});
        if (bar != std::string::npos)
            canvas.Text(x + 124, y - 1, lines[i].substr(bar + 1),
                        {.size = 19, .bold = true, .colour = Colour::Rgb(0xD2542B), .align = 1});
    }
}

// What comes when: a line for each "time|programme", the first of them now.
void DrawProgramme(Canvas& canvas, const SlideDescription& slide, Colour colour) {
    canvas.Gradient(0, 0, kWidth, kHeight, Colour::Rgb(0x10131C), Mix(colour, Colour::Rgb(0x10131C), 0.7));
    canvas.Rectangle(0, 0, kWidth, 46, colour);
    canvas.Gradient(0, 0, kWidth, 46, Colour::Rgb(0xFFFFFF, 0.2), Colour::Rgb(0xFFFFFF, 0));
    canvas.Text(16, 10, slide.title, {.size = 21, .bold = true, .width = 290});
    const auto lines = Lines(slide.text);
    for (std::size_t i = 0; i < lines.size() && i < 5; ++i) {
        const double y = 58 + static_cast<double>(i) * 35;
        const std::size_t bar = lines[i].find('|');
        const bool now = i == 0;
        canvas.RoundRectangle(12, y, 296, 30, 6, Colour::Rgb(0xFFFFFF, now ? 0.95 : 0.1));
        const Colour ink = now ? Colour::Rgb(0x16202E) : Colour::Rgb(0xFFFFFF);
        if (now)
            canvas.RoundRectangle(12, y, 6, 30, 3, colour);
        canvas.Text(26, y + 5, lines[i].substr(0, bar), {.size = 17, .bold = true, .colour = ink});
        if (bar != std::string::npos)
            canvas.Text(88, y + 5, lines[i].substr(bar + 1), {.size = 17, .colour = ink, .width = 214});
    }
}

// Mountains behind mountains under a low sun.
void DrawScenery(Canvas& canvas, const SlideDescription& slide, Colour colour) {
    canvas.Gradient(0, 0, kWidth, 170, Mix(colour, Colour::Rgb(0x101830), 0.35),
                    Mix(colour, Colour::Rgb(0xFFE2B8), 0.75));
    canvas.Glow(214, 96, 100, Colour::Rgb(0xFFF3D0, 0.9));
    canvas.Disc(214, 96, 20, Colour::Rgb(0xFFF8E4));
    cairo_t* c = canvas.Cairo();
    for (int layer = 0; layer < 5; ++layer) {
        const Colour rock = Mix(Mix(colour, Colour::Rgb(0xFFE2B8), 0.5), Colour::Rgb(0x0B1020), 0.2 + 0.18 * layer);
        cairo_new_path(c);
        cairo_move_to(c, 0, kHeight);
        for (int x = 0; x <= 320; x += 2) {
            const double s = x * 0.011 + layer * 2.3;
            const double y = 112 + layer * 24 - 22 * std::sin(s * 1.3) - 11 * std::sin(s * 3.1 + layer) -
                             4 * std::sin(s * 9.7 + 2 * layer) - 2 * std::sin(s * 21.0);
            cairo_line_to(c, x, y);
        }
        cairo_line_to(c, kWidth, kHeight);
        cairo_close_path(c);
        cairo_set_source_rgb(c, rock.red, rock.green, rock.blue);
        cairo_fill(c);
        canvas.Gradient(0, 118 + layer * 24, kWidth, 40, Colour::Rgb(0xFFFFFF, 0), Colour::Rgb(0xFFFFFF, 0.09));
    }
    for (int i = 0; i < 5; ++i) {
        const double x = 66 + i * 17 + (i % 2) * 5;
        const double y = 48 + std::abs(i - 2) * 6;
        canvas.Line(x - 5, y - 3, x, y, 1.3, Colour::Rgb(0x16202E, 0.8));
        canvas.Line(x, y, x + 5, y - 3, 1.3, Colour::Rgb(0x16202E, 0.8));
    }
    canvas.Text(18, 176, slide.title, {.size = 23, .bold = true, .width = 284, .shadow = true});
    canvas.Text(18, 206, slide.text, {.size = 14, .colour = Colour::Rgb(0xFFFFFF, 0.9), .width = 284, .shadow = true});
}

} // namespace

std::vector<std::string> SlideStyles() {
    return {"cover", "programme", "scenery", "weather"};
}

void DrawSlide(Canvas& canvas, const SlideDescription& slide) {
    const Colour colour = Colour::Rgb(slide.colour);
    cairo_save(canvas.Cairo());
    cairo_scale(canvas.Cairo(), canvas.Width() / kWidth, canvas.Height() / kHeight);
    if (slide.style == "weather")
        DrawWeather(canvas, slide, colour);
    else if (slide.style == "programme")
        DrawProgramme(canvas, slide, colour);
    else if (slide.style == "scenery")
        DrawScenery(canvas, slide, colour);
    else
        DrawCover(canvas, slide, colour);
    cairo_restore(canvas.Cairo());
}

wire::ByteVector MakeSlideFile(const SlideDescription& slide) {
    if (!slide.file.empty()) {
        std::ifstream file(slide.file, std::ios::binary);
        wire::ByteVector bytes{std::istreambuf_iterator<char>(file), {}};
        if (bytes.empty())
            throw std::runtime_error(slide.file.string() + ": cannot be read");
        return bytes;
    }
    Canvas canvas(slide.width, slide.height);
    DrawSlide(canvas, slide);
    return WriteJpeg(
        {.width = slide.width, .height = slide.height, .quality = slide.quality, .progressive = slide.progressive},
        canvas.Pixels(), canvas.Stride());
}

} // namespace headend

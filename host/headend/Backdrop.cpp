#include "host/headend/Backdrop.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>

#include <cairo.h>

namespace headend {

namespace {

constexpr double kPi = std::numbers::pi;

// The same throws for the same seed on every machine.
class Dice {
public:
    explicit Dice(std::uint32_t seed) : state(seed) {}
    double Next() {
        state = state * 1664525u + 1013904223u;
        return (state >> 8) / 16777216.0;
    }
    double Between(double low, double high) { return low + (high - low) * Next(); }

private:
    std::uint32_t state;
};

// A river city at night: three rows of houses gliding past at their own speeds, lit windows, cars on the bridge.
class City : public Backdrop {
public:
    City(int w, int h) : width(w), height(h), sky(w, h) {
        sky.Gradient(0, 0, w, h * 0.72, Colour::Rgb(0x0B1030), Colour::Rgb(0x5A3B6E));
        sky.Gradient(0, h * 0.45, w, h * 0.27, Colour::Rgb(0xE07A5F, 0), Colour::Rgb(0xE07A5F, 0.75));
        Dice dice(7);
        for (int i = 0; i < 60; ++i)
            sky.Disc(dice.Between(0, w), dice.Between(0, h * 0.45), dice.Between(0.4, 1.1),
                     Colour::Rgb(0xFFFFFF, dice.Between(0.3, 0.9)));
        sky.Glow(w * 0.76, h * 0.2, h * 0.2, Colour::Rgb(0xFFF1C9, 0.5));
        sky.Disc(w * 0.76, h * 0.2, h * 0.065, Colour::Rgb(0xFFF6DD));
        sky.Disc(w * 0.75, h * 0.195, h * 0.014, Colour::Rgb(0xE9DDB8));
        sky.Disc(w * 0.772, h * 0.215, h * 0.02, Colour::Rgb(0xEBE0BE));
        sky.Disc(w * 0.764, h * 0.178, h * 0.01, Colour::Rgb(0xE9DDB8));
        const std::array<std::uint32_t, 3> walls = {0x3B2F5C, 0x2A2348, 0x171531};
        for (std::size_t row = 0; row < rows.size(); ++row) {
            Dice builder(static_cast<std::uint32_t>(31 + row * 17));
            double x = 0;
            while (x < w) {
                const double wide = builder.Between(18, 40);
                const double high = h * (0.20 + 0.06 * static_cast<double>(row)) * builder.Between(0.5, 1.15);
                rows[row].push_back({x, wide, high, Colour::Rgb(walls[row]), builder.Next()});
                x += wide + builder.Between(0, 6);
            }
            lengths[row] = x;
        }
    }

    void Draw(Canvas& canvas, double t) override {
        canvas.Paint(sky, 0, 0);
        const double ground = height * 0.72;
        for (std::size_t row = 0; row < rows.size(); ++row) {
            const double shift = std::fmod(t * (6.0 + 9.0 * static_cast<double>(row)), lengths[row]);
            for (const House& house : rows[row]) {
                for (double base : {-shift, lengths[row] - shift}) {
                    const double x = house.x + base;
                    if (x < width && x + house.wide > 0)
                        DrawHouse(canvas, house, x, ground, t, row);
                }
            }
        }
        DrawRiver(canvas, ground, t);
    }

private:
    struct House {
        double x;
        double wide;
        double high;
        Colour wall;
        double seed;
    };

    static void DrawHouse(Canvas& canvas, const House& house, double x, double ground, double t, std::size_t row) {
        canvas.Rectangle(x, ground - house.high, house.wide, house.high, house.wall);
        Dice lights(static_cast<std::uint32_t>(house.seed * 100000));
        const double step = 5 + static_cast<double>(row);
        for (double wy = ground - house.high + 4; wy < ground - 5; wy += step + 1) {
            for (double wx = x + 3; wx < x + house.wide - 4; wx += step) {
                const double lit = lights.Next();
                const double blink = std::sin(t * 0.4 + lit * 40);
                if (lit > 0.52 && blink > -0.8)
                    canvas.Rectangle(wx, wy, 2.4, 2.8, Colour::Rgb(lit > 0.85 ? 0xBFE3FF : 0xFFD27A, 0.85));
            }
        }
        if (house.seed > 0.75 && std::fmod(t + house.seed * 3, 1.5) < 0.75)
            canvas.Disc(x + house.wide / 2, ground - house.high - 2, 1.6, Colour::Rgb(0xFF4B4B));
    }

    void DrawRiver(Canvas& canvas, double ground, double t) const {
        canvas.Gradient(0, ground, width, height - ground, Colour::Rgb(0x3A2A4F), Colour::Rgb(0x0A0D22));
        for (int i = 0; i < 26; ++i) {
            const double x = std::fmod(i * 53.7 + t * 5, width + 40.0) - 20;
            const double y = ground + 14 + (i * 29) % 47 * (height - ground - 16) / 47;
            const double bob = std::sin(t * 1.7 + i) * 5;
            canvas.Line(x + bob, y, x + bob + 10 + i % 4 * 4, y, 1,
                        Colour::Rgb(i % 3 == 0 ? 0xFFD27A : 0xB58BC9, 0.35));
        }
        canvas.Rectangle(0, ground - 1, width, 8, Colour::Rgb(0x0D0D1E));
        canvas.Rectangle(0, ground + 1.5, width, 1, Colour::Rgb(0x6C6688));
        for (int i = 0; i < 9; ++i) {
            const double away = std::fmod(i * 71.0 + t * 60, width + 60.0) - 30;
            const double near = width + 30 - std::fmod(i * 83.0 + t * 75, width + 60.0);
            canvas.Disc(away, ground + 2.5, 1.5, Colour::Rgb(0xFF5A4A));
            canvas.Glow(near, ground + 5, 6, Colour::Rgb(0xFFF3C4, 0.7));
            canvas.Disc(near, ground + 5, 1.5, Colour::Rgb(0xFFFBE8));
        }
    }

    int width;
    int height;
    Canvas sky;
    std::array<std::vector<House>, 3> rows;
    std::array<double, 3> lengths{};
};

// An evening at sea: sun and its road on the water, waves, a sailing boat, gulls.
class Sea : public Backdrop {
public:
    Sea(int w, int h) : width(w), height(h), sky(w, h) {
        const double horizon = h * 0.5;
        sky.Gradient(0, 0, w, horizon, Colour::Rgb(0x3E8FC9), Colour::Rgb(0xFBE3B5));
        sky.Gradient(0, horizon * 0.5, w, horizon * 0.5, Colour::Rgb(0xFF9E6B, 0), Colour::Rgb(0xFF9E6B, 0.8));
        sky.Glow(w * 0.62, horizon - h * 0.1, h * 0.36, Colour::Rgb(0xFFF2C0, 0.85));
        sky.Disc(w * 0.62, horizon - h * 0.1, h * 0.075, Colour::Rgb(0xFFF9E2));
        sky.Gradient(0, horizon, w, h - horizon, Colour::Rgb(0xE49A6D), Colour::Rgb(0x0F4C75));
        // An island.
        cairo_t* c = sky.Cairo();
        cairo_move_to(c, 0, horizon);
        cairo_curve_to(c, w * 0.05, horizon - h * 0.14, w * 0.12, horizon - h * 0.12, w * 0.17, horizon - h * 0.06);
        cairo_curve_to(c, w * 0.2, horizon - h * 0.1, w * 0.28, horizon - h * 0.04, w * 0.34, horizon);
        cairo_close_path(c);
        cairo_set_source_rgb(c, 0.29, 0.36, 0.45);
        cairo_fill(c);
    }

    void Draw(Canvas& canvas, double t) override {
        canvas.Paint(sky, 0, 0);
        for (int i = 0; i < 3; ++i)
            DrawCloud(canvas, std::fmod(i * 130.0 + t * (3 + i), width + 120.0) - 60, height * (0.1 + 0.07 * i), i);
        const double horizon = height * 0.5;
        for (int i = 0; i < 22; ++i) {
            const double y = horizon + 3 + i * i * 0.22;
            const double half = 5 + i * 1.6 + 4 * std::sin(t * 3 + i * 1.9);
            canvas.Line(width * 0.62 - half, y, width * 0.62 + half, y, 1.2 + i * 0.06, Colour::Rgb(0xFFF0C2, 0.55));
        }
        DrawWave(canvas, horizon + height * 0.10, 3, 60, t * 0.9, Colour::Rgb(0x3C7FA6, 0.55));
        DrawBoat(canvas, std::fmod(t * 7 + 40, width + 90.0) - 45, horizon + height * 0.13 + 2.5 * std::sin(t * 1.3),
                 0.06 * std::sin(t * 1.1));
        DrawWave(canvas, horizon + height * 0.17, 4, 85, -t * 1.1, Colour::Rgb(0x23698F, 0.75));
        DrawWave(canvas, horizon + height * 0.27, 5.5, 120, t * 1.4, Colour::Rgb(0x15557D, 0.9));
        for (int i = 0; i < 4; ++i)
            DrawGull(canvas, width + 30 - std::fmod(i * 97.0 + t * (16 + 3 * i), width + 60.0),
                     height * (0.2 + 0.06 * i) + 6 * std::sin(t + i), t * (5 + i));
    }

private:
    static void DrawCloud(Canvas& canvas, double x, double y, int i) {
        const Colour white = Colour::Rgb(0xFFFFFF, 0.28);
        canvas.Glow(x, y, 22 + 4 * i, white);
        canvas.Glow(x + 20, y + 3, 18, white);
        canvas.Glow(x - 22, y + 4, 16, white);
    }

    void DrawWave(Canvas& canvas, double y, double high, double length, double phase, Colour colour) const {
        cairo_t* c = canvas.Cairo();
        cairo_move_to(c, 0, height);
        for (int x = 0; x <= width; x += 4)
            cairo_line_to(c, x,
                          y + high * std::sin(2 * kPi * x / length + phase) +
                              high * 0.5 * std::sin(2 * kPi * x / (length * 0.37) - phase * 1.6));
        cairo_line_to(c, width, height);
        cairo_close_path(c);
        cairo_set_source_rgba(c, colour.red, colour.green, colour.blue, colour.alpha);
        cairo_fill(c);
    }

    static void DrawBoat(Canvas& canvas, double x, double y, double tilt) {
        cairo_t* c = canvas.Cairo();
        cairo_save(c);
        cairo_translate(c, x, y);
        cairo_rotate(c, tilt);
        cairo_set_source_rgb(c, 0.98, 0.96, 0.9);
        cairo_move_to(c, 1, -46);
        cairo_curve_to(c, 14, -34, 20, -20, 21, -7);
        cairo_line_to(c, 1, -7);
        cairo_close_path(c);
        cairo_fill(c);
        cairo_set_source_rgb(c, 0.87, 0.33, 0.28);
        cairo_move_to(c, -2, -42);
        cairo_curve_to(c, -10, -28, -15, -18, -17, -7);
        cairo_line_to(c, -2, -7);
        cairo_close_path(c);
        cairo_fill(c);
        cairo_set_source_rgb(c, 0.23, 0.17, 0.2);
        cairo_rectangle(c, -1, -50, 1.6, 46);
        cairo_fill(c);
        cairo_move_to(c, -26, -4);
        cairo_line_to(c, 28, -4);
        cairo_curve_to(c, 24, 6, 18, 8, 12, 8);
        cairo_line_to(c, -14, 8);
        cairo_curve_to(c, -20, 7, -24, 3, -26, -4);
        cairo_fill(c);
        cairo_restore(c);
    }

    static void DrawGull(Canvas& canvas, double x, double y, double beat) {
        const double lift = 3 * std::sin(beat);
        const Colour ink = Colour::Rgb(0x34495E);
        canvas.Line(x - 7, y - 2 - lift, x, y, 1.4, ink);
        canvas.Line(x, y, x + 7, y - 2 - lift, 1.4, ink);
    }

    int width;
    int height;
    Canvas sky;
};

// Out there: stars flying past, a sun with planets, one of them ringed, a comet.
class Space : public Backdrop {
public:
    Space(int w, int h) : width(w), height(h), sky(w, h) {
        sky.Gradient(0, 0, w, h, Colour::Rgb(0x050414), Colour::Rgb(0x120A2C));
        sky.Glow(w * 0.2, h * 0.75, h * 0.6, Colour::Rgb(0x2B3FA8, 0.35));
        sky.Glow(w * 0.85, h * 0.25, h * 0.55, Colour::Rgb(0x8A2B8F, 0.3));
        Dice dice(99);
        for (Star& star : stars)
            star = {dice.Between(-1, 1), dice.Between(-1, 1), dice.Next()};
    }

    void Draw(Canvas& canvas, double t) override {
        canvas.Paint(sky, 0, 0);
        const double cx = width * 0.5;
        const double cy = height * 0.47;
        for (const Star& star : stars) {
            const double depth = 1 - std::fmod(star.phase + t * 0.06, 1.0);
            const double x = cx + star.x * width * 0.2 / depth;
            const double y = cy + star.y * width * 0.2 / depth;
            canvas.Disc(x, y, 0.5 + 1.1 * (1 - depth), Colour::Rgb(0xFFFFFF, 0.9 * (1 - depth)));
        }
        struct Planet {
            double orbit, size, speed, phase;
            std::uint32_t colour;
            bool ring;
        };
        static constexpr std::array<Planet, 4> kPlanets = {{{0.22, 4, 1.3, 0.0, 0xC9A27E, false},
                                                            {0.36, 7, 0.8, 2.1, 0x4FA3E0, false},
                                                            {0.52, 5, 0.55, 4.0, 0xD8583A, false},
                                                            {0.74, 11, 0.3, 0.9, 0xE3C48C, true}}};
        const auto place = [&](const Planet& p) {
            const double a = t * p.speed + p.phase;
            return std::array<double, 3>{cx + std::cos(a) * p.orbit * width * 0.55,
                                         cy + std::sin(a) * p.orbit * width * 0.2, std::sin(a)};
        };
        for (const Planet& p : kPlanets)
            DrawOrbit(canvas, cx, cy, p.orbit * width * 0.55, p.orbit * width * 0.2);
        for (const bool front : {false, true}) {
            for (const Planet& p : kPlanets) {
                const auto at = place(p);
                if ((at[2] > 0) == front)
                    DrawPlanet(canvas, at[0], at[1], p.size * (1 + 0.25 * at[2]), Colour::Rgb(p.colour), p.ring);
            }
            if (!front) {
                const double pulse = 1 + 0.04 * std::sin(t * 4);
                canvas.Glow(cx, cy, 46 * pulse, Colour::Rgb(0xFFB347, 0.8));
                canvas.Disc(cx, cy, 13, Colour::Rgb(0xFFE8A3));
            }
        }
        const double flight = std::fmod(t, 12.0) / 4;
        if (flight < 1)
            DrawComet(canvas, width * (1.1 - 1.3 * flight), height * (0.08 + 0.3 * flight));
    }

private:
    struct Star {
        double x, y, phase;
    };

    static void DrawOrbit(Canvas& canvas, double cx, double cy, double rx, double ry) {
        cairo_t* c = canvas.Cairo();
        cairo_save(c);
        cairo_translate(c, cx, cy);
        cairo_scale(c, rx, ry);
        cairo_arc(c, 0, 0, 1, 0, 2 * kPi);
        cairo_restore(c);
        cairo_set_source_rgba(c, 0.6, 0.7, 1, 0.22);
        cairo_set_line_width(c, 0.8);
        cairo_stroke(c);
    }

    static void DrawPlanet(Canvas& canvas, double x, double y, double size, Colour colour, bool ring) {
        canvas.Disc(x, y, size, colour);
        canvas.Glow(x - size * 0.35, y - size * 0.35, size * 0.9, Colour::Rgb(0xFFFFFF, 0.55));
        if (!ring)
            return;
        cairo_t* c = canvas.Cairo();
        cairo_save(c);
        cairo_translate(c, x, y);
        cairo_rotate(c, -0.35);
        cairo_scale(c, size * 1.9, size * 0.55);
        cairo_arc(c, 0, 0, 1, -0.2, kPi + 0.2);
        cairo_restore(c);
        cairo_set_source_rgba(c, 0.95, 0.88, 0.7, 0.85);
        cairo_set_line_width(c, 2);
        cairo_stroke(c);
    }

    static void DrawComet(Canvas& canvas, double x, double y) {
        for (int i = 12; i >= 0; --i)
            canvas.Disc(x + i * 5, y - i * 1.2, 2.4 - i * 0.16, Colour::Rgb(0xBFE9FF, 0.5 - i * 0.035));
        canvas.Disc(x, y, 2.4, Colour::Rgb(0xFFFFFF));
    }

    int width;
    int height;
    Canvas sky;
    std::array<Star, 130> stars{};
};

// Colour bars and a bar that runs across them: for measuring, not for looking.
class Bars : public Backdrop {
public:
    Bars(int w, int h) : width(w), height(h) {}
    void Draw(Canvas& canvas, double t) override {
        constexpr std::array<std::uint32_t, 8> kBars = {0xFFFFFF, 0xC0C000, 0x00C0C0, 0x00C000,
                                                        0xC000C0, 0xC00000, 0x0000C0, 0x000000};
        for (std::size_t i = 0; i < kBars.size(); ++i)
            canvas.Rectangle(width * static_cast<double>(i) / 8, 0, width / 8.0 + 1, height, Colour::Rgb(kBars[i]));
        canvas.Rectangle(std::fmod(t * 80, width), 0, 6, height, Colour::Rgb(0xFF8800));
    }

private:
    int width;
    int height;
};

} // namespace

std::vector<std::string> BackdropNames() {
    return {"bars", "city", "sea", "space"};
}

std::unique_ptr<Backdrop> MakeBackdrop(const std::string& name, int width, int height) {
    if (name == "city")
        return std::make_unique<City>(width, height);
    if (name == "sea")
        return std::make_unique<Sea>(width, height);
    if (name == "space")
        return std::make_unique<Space>(width, height);
    return std::make_unique<Bars>(width, height);
}

} // namespace headend

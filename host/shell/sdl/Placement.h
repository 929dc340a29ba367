// Where the screen lies in a window of any size, and back from a point of the window to one of the screen. Pure.
#pragma once

namespace shell::sdl {

inline constexpr int kScreenWidth = 800;
inline constexpr int kScreenHeight = 480;

struct Box {
    int x = 0, y = 0, width = 0, height = 0;
    bool operator==(const Box&) const = default;
};

struct Point {
    int x = 0, y = 0;
    bool operator==(const Point&) const = default;
};

// The largest box of the given shape (width to height) inside `outer`, in its middle. An impossible shape fills it.
[[nodiscard]] Box FitInside(const Box& outer, double shape);

// The screen in an output of so many pixels: as large as it can be, never distorted.
[[nodiscard]] Box PlaceScreen(int outputWidth, int outputHeight);

// A part of the screen, as it lies in the output. Edges that meet on the screen meet there too. The part may be given in pixels of a
// screen that has `scale` of them for each of the usual.
[[nodiscard]] Box ToOutput(const Box& part, const Box& screen, int scale = 1);

// How finely the screen should be drawn for an output of so many pixels: as usual (1) up to a quarter larger than the screen is,
// else with two pixels for one (2).
[[nodiscard]] int ScaleFor(int outputWidth, int outputHeight);

// A point of a window, which counts in units of its own (a high-density display has several pixels for one), on the screen. A
// point beside the screen is given with coordinates outside of it.
[[nodiscard]] Point ToScreen(const Point& inWindow, int windowWidth, int windowHeight);

} // namespace shell::sdl

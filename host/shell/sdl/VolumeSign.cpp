#include "host/shell/sdl/VolumeSign.h"

#include "host/shell/sdl/Placement.h"

#include <algorithm>
#include <array>

namespace shell::sdl {

namespace {

constexpr Box kPanel = {536, 72, 248, 48};
constexpr Box kBar = {592, 90, 176, 12};
constexpr std::uint32_t kPanelColour = 0xFF10161D;
constexpr std::uint32_t kEmptyColour = 0xFF3A4653;
constexpr std::uint32_t kFullColour = 0xFFF2F5F9;
constexpr std::uint32_t kMutedColour = 0xFFFF6B5E;

// The pixels of a frame, in which boxes are given in units of the usual screen.
struct Canvas {
    std::span<std::uint32_t> pixels;
    int scale;

    void Fill(const Box& box, std::uint32_t colour) const {
        FillPixels({box.x * scale, box.y * scale, box.width * scale, box.height * scale}, colour);
    }
    void FillPixels(const Box& box, std::uint32_t colour) const {
        for (int y = box.y; y < box.y + box.height; ++y) {
            std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(y) * kScreenWidth * scale + box.x, box.width,
                        colour);
        }
    }
};

// Rows of 20 pixels: the loudspeaker, and what is in front of it.
constexpr int kSignRows = 20;
using Sign = std::array<std::uint32_t, kSignRows>; // bit 19: the leftmost pixel

constexpr Sign kSpeaker = {0x00000, 0x00000, 0x01000, 0x03000, 0x07000, 0x0F000, 0x7F000, 0x7F000, 0x7F000, 0x7F000,
                           0x7F000, 0x7F000, 0x7F000, 0x7F000, 0x0F000, 0x07000, 0x03000, 0x01000, 0x00000, 0x00000};
constexpr Sign kWaves = {0x00000, 0x00010, 0x00008, 0x00084, 0x00044, 0x00022, 0x00222, 0x00112, 0x00111, 0x00111,
                         0x00111, 0x00111, 0x00112, 0x00222, 0x00022, 0x00044, 0x00084, 0x00008, 0x00010, 0x00000};
constexpr Sign kCross = {0x00000, 0x00000, 0x00000, 0x00000, 0x00000, 0x00000, 0x00303, 0x00186, 0x000CC, 0x00078,
                         0x00078, 0x000CC, 0x00186, 0x00303, 0x00000, 0x00000, 0x00000, 0x00000, 0x00000, 0x00000};

bool IsSet(const Sign& sign, int x, int y) {
    return x >= 0 && y >= 0 && x < kSignRows && y < kSignRows &&
           (sign[static_cast<std::size_t>(y)] >> (kSignRows - 1 - x) & 1) != 0;
}

// One of the four finer pixels that a pixel becomes; `right` and `below` are 1 for those on that side. Steps of a slanted edge
// become steps of half the height: a corner takes the colour on which the two neighbours beside it agree, unless the edge goes
// straight on.
bool IsFinerSet(const Sign& sign, int x, int y, int right, int below) {
    const int aside = 2 * right - 1;
    const int onward = 2 * below - 1;
    const bool beside = IsSet(sign, x + aside, y);
    const bool next = IsSet(sign, x, y + onward);
    const bool corner = beside == next && beside != IsSet(sign, x - aside, y) && next != IsSet(sign, x, y - onward);
    return corner ? beside : IsSet(sign, x, y);
}

void Draw(const Canvas& canvas, const Sign& sign, std::uint32_t colour) {
    constexpr int kLeft = kPanel.x + 18;
    constexpr int kTop = kPanel.y + 14;
    const int scale = canvas.scale;
    for (int y = 0; y < kSignRows * scale; ++y) {
        for (int x = 0; x < kSignRows * scale; ++x) {
            const bool set = scale == 2 ? IsFinerSet(sign, x / 2, y / 2, x % 2, y % 2) : IsSet(sign, x, y);
            if (set) {
                canvas.FillPixels({kLeft * scale + x, kTop * scale + y, 1, 1}, colour);
            }
        }
    }
}

} // namespace

void DrawVolumeSign(std::span<std::uint32_t> pixels, int scale, int percent, bool muted) {
    if (scale < 1 || pixels.size() < static_cast<std::size_t>(kScreenWidth) * kScreenHeight * scale * scale) {
        return;
    }
    const Canvas canvas{pixels, scale};
    canvas.Fill(kPanel, kPanelColour);
    Draw(canvas, kSpeaker, kFullColour);
    Draw(canvas, muted ? kCross : kWaves, muted ? kMutedColour : kFullColour);
    canvas.Fill(kBar, kEmptyColour);
    const int full = kBar.width * std::clamp(percent, 0, 100) / 100;
    canvas.Fill({kBar.x, kBar.y, full, kBar.height}, muted ? kMutedColour : kFullColour);
}

} // namespace shell::sdl

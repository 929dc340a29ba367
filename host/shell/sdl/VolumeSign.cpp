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

void Fill(std::span<std::uint32_t> pixels, const Box& box, std::uint32_t colour) {
    for (int y = box.y; y < box.y + box.height; ++y) {
        std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(y) * kScreenWidth + box.x, box.width, colour);
    }
}

// Rows of 20 pixels: the loudspeaker, and what is in front of it.
constexpr int kSignRows = 20;
using Sign = std::array<std::uint32_t, kSignRows>; // bit 19: the leftmost pixel

constexpr Sign kSpeaker = {0x00000, 0x00000, 0x01000, 0x03000, 0x07000, 0x0F000, 0x7F000, 0x7F000, 0x7F000, 0x7F000,
                           0x7F000, 0x7F000, 0x7F000, 0x7F000, 0x0F000, 0x07000, 0x03000, 0x01000, 0x00000, 0x00000};
constexpr Sign kWaves = {0x00000, 0x00010, 0x00008, 0x00084, 0x00044, 0x00022, 0x00222, 0x00112, 0x00111, 0x00111,
                         0x00111, 0x00111, 0x00112, 0x00222, 0x00022, 0x00044, 0x00084, 0x00008, 0x00010, 0x00000};
constexpr Sign kCross = {0x00000, 0x00000, 0x00000, 0x00000, 0x00000, 0x00000, 0x00303, 0x00186, 0x000CC, 0x00078,
                         0x00078, 0x000CC, 0x00186, 0x00303, 0x00000, 0x00000, 0x00000, 0x00000, 0x00000, 0x00000};

void Draw(std::span<std::uint32_t> pixels, const Sign& sign, std::uint32_t colour) {
    constexpr int kLeft = kPanel.x + 18;
    constexpr int kTop = kPanel.y + 14;
    for (int y = 0; y < kSignRows; ++y) {
        for (int x = 0; x < kSignRows; ++x) {
            if ((sign[static_cast<std::size_t>(y)] >> (kSignRows - 1 - x) & 1) != 0) {
                Fill(pixels, {kLeft + x, kTop + y, 1, 1}, colour);
            }
        }
    }
}

} // namespace

void DrawVolumeSign(std::span<std::uint32_t> pixels, int percent, bool muted) {
    if (pixels.size() < static_cast<std::size_t>(kScreenWidth) * kScreenHeight) {
        return;
    }
    Fill(pixels, kPanel, kPanelColour);
    Draw(pixels, kSpeaker, kFullColour);
    Draw(pixels, muted ? kCross : kWaves, muted ? kMutedColour : kFullColour);
    Fill(pixels, kBar, kEmptyColour);
    const int full = kBar.width * std::clamp(percent, 0, 100) / 100;
    Fill(pixels, {kBar.x, kBar.y, full, kBar.height}, muted ? kMutedColour : kFullColour);
}

} // namespace shell::sdl

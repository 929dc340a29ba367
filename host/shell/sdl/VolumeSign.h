// The sign that shows for a moment how loud it is: a loudspeaker and a bar.
#pragma once

#include <cstdint>
#include <span>

namespace shell::sdl {

// Draws it over the screen's pixels (0xAARRGGBB, colours not multiplied with alpha), below the title bar on the right. `scale` is that
// of the frame.
void DrawVolumeSign(std::span<std::uint32_t> pixels, int scale, int percent, bool muted);

} // namespace shell::sdl

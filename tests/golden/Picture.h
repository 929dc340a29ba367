// Pictures of the screen and how like two of them are.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace golden {

struct Picture {
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels; // 0x00RRGGBB, rows from the top
};

// Nothing when the file is missing or no PNG picture.
[[nodiscard]] std::optional<Picture> Read(const std::filesystem::path& file);
// False when the file cannot be written.
[[nodiscard]] bool Write(const Picture& picture, const std::filesystem::path& file);

// The same as a plain picture (PPM), for tools/golden.py.
[[nodiscard]] bool WritePlain(const Picture& picture, const std::filesystem::path& file);

// What a stored picture may lose: it is kept with a palette, and another release of the font library moves an edge by a shade.
inline constexpr int kShade = 24;         // of 255, in one channel: below it a pixel counts as the same
inline constexpr int kOtherPerMille = 1;  // of all pixels may be others
inline constexpr double kMeanShade = 2.5; // over all pixels and channels

struct Difference {
    int others = 0; // pixels beyond the shade
    double mean = 0;
    [[nodiscard]] bool IsAlike(const Picture& picture) const {
        return others * 1000 <= picture.width * picture.height * kOtherPerMille && mean <= kMeanShade;
    }
};

// Both must have the same size.
[[nodiscard]] Difference Compare(const Picture& left, const Picture& right);
// Half as wide and high, each pixel the mean of four.
[[nodiscard]] Picture Halved(const Picture& picture);
// The pixels beyond the shade in red on the darkened left picture, to look at.
[[nodiscard]] Picture Marked(const Picture& left, const Picture& right);

} // namespace golden

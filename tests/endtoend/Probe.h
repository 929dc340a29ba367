// A recording, decoded by the probe program as if it had come from elsewhere.
#pragma once

#include <filesystem>

namespace endtoend {

// Expects that the file plays, with more pictures and more seconds of music than that. `folder` takes what was decoded.
void ExpectPlays(const std::filesystem::path& file, const std::filesystem::path& folder, unsigned pictures,
                 unsigned seconds);

constexpr double kHeard = 200; // loudness above which there is music

} // namespace endtoend

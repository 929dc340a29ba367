// The parts of a broadcast as files, to look at and to test against: what a receiver should get out of it.
#pragma once

#include <filesystem>
#include <vector>

#include "host/headend/Description.h"

namespace headend {

// For each television service `<id>.ts` and pictures `<id>-<seconds>.png`; for each radio service `<id>-<n>.jpg` (or .png)
// and `<id>.txt`, one text a line in UTF-8. Returns the files written. Throws std::runtime_error.
std::vector<std::filesystem::path> WriteParts(const Description& description, const std::filesystem::path& directory);

} // namespace headend

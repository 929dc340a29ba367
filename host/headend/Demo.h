// The built-in demo broadcast, made at first use and kept.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "host/headend/Headend.h"

namespace headend {

// The description of the demo, as JSON (docs/headend.md).
[[nodiscard]] std::string_view DemoDescription();

// Names everything that the demo's bytes depend on: its description, the transmitter's own sources, the encoders' versions.
[[nodiscard]] std::string DemoRecipe();

// The directory below `cacheDirectory` that holds the demo's `<block>.eti` files. Makes them (a few seconds) when they are
// not there, are not whole, or were made after another recipe; then `progress` is called, from working threads. Throws
// std::runtime_error when they cannot be made or written; Interrupted, and what was there before is untouched, soon after a stop is
// asked for.
[[nodiscard]] std::filesystem::path EnsureDemo(const std::filesystem::path& cacheDirectory,
                                               const Progress& progress = {}, const std::stop_token& stop = {});

// The same for any description: `directory` holds its files, unless they have to be made.
void EnsureBroadcast(std::string_view json, const std::string& recipe, const std::filesystem::path& directory,
                     const Progress& progress = {}, const std::stop_token& stop = {});

} // namespace headend

// The members of a description that say what a service is: label, sound, picture, texts, slides, changes.
#pragma once

#include <filesystem>

#include "host/headend/Description.h"
#include "host/headend/JsonNode.h"

namespace headend {

[[nodiscard]] LabelDescription ReadRequiredLabel(JsonNode& node);
// `rate` when the window has none of its own.
[[nodiscard]] Window ReadWindow(JsonNode& node, double rate);
[[nodiscard]] ServiceDescription ReadService(JsonNode& node, const std::filesystem::path& base);

} // namespace headend

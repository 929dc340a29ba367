// The numbered texts of the skin resources, in every language.
#pragma once

#include "host/shell/skin/SkinDescription.h"

#include <map>
#include <string>
#include <string_view>

namespace shell {

// Resource name -> text number -> text. The same number means different texts in different resources.
using MessageTexts = std::map<std::string, std::map<WORD, LocalText>, std::less<>>;

// Reads lines `resource NAME` and `message NUMBER "Korean" "English"`. Throws SkinError.
[[nodiscard]] MessageTexts ReadMessageTexts(std::string_view file, std::string_view content);

} // namespace shell

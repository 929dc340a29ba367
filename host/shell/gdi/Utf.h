// Wide text (UTF-16) to UTF-8 and back. What is not well formed becomes U+FFFD.
#pragma once

#include "platform/types.h"

#include <string>
#include <string_view>

namespace shell {

[[nodiscard]] std::string ToUtf8(WStringView text);
[[nodiscard]] WString ToWide(std::string_view text);

} // namespace shell

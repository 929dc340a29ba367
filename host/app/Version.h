// One version for all programs.
#pragma once

namespace app {

inline constexpr const char* kVersion = "0.1.0";

} // namespace app

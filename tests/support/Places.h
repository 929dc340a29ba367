// Where this source tree and this build lie. Only Places.cpp is compiled with these paths, so that a compiler cache serves every
// other test source in any folder.
#pragma once

#include <string>

namespace testing_support {

[[nodiscard]] std::string SourceDir();
[[nodiscard]] std::string BinaryDir();

} // namespace testing_support

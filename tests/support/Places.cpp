#include "tests/support/Places.h"

namespace testing_support {

std::string SourceDir() {
    return DMB_SOURCE_DIR;
}

std::string BinaryDir() {
    return DMB_BINARY_DIR;
}

} // namespace testing_support

// Why a skin cannot be used: which file, which line (0 when the whole file is meant), and the reason.
#pragma once

#include "platform/types.h"

#include <stdexcept>
#include <string>

namespace shell {

class DMB_HOST_API SkinError : public std::runtime_error {
public:
    SkinError(std::string fileName, int lineNumber, std::string why)
        : std::runtime_error(fileName + ":" + std::to_string(lineNumber) + ": " + why), file(std::move(fileName)),
          line(lineNumber), reason(std::move(why)) {}

    std::string file;
    int line;
    std::string reason;
};

} // namespace shell

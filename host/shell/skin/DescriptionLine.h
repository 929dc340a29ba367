// One line of a skin or text description: a keyword and its arguments.
//
//   keyword  argument  "quoted argument"   # comment
//
// Inside quotes \" \\ and \n are understood; everything else is taken as it stands. Text is UTF-8.
#pragma once

#include "host/shell/skin/SkinError.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace shell {

struct DescriptionLine {
    int number = 0; // 1-based
    std::string keyword;
    std::vector<std::string> arguments;
};

// Reads a description line by line; empty lines and comments are skipped.
class DescriptionReader {
public:
    DescriptionReader(std::string_view file, std::string_view content) : fileName(file), rest(content) {}

    // The next line with a keyword; nothing at the end. Throws SkinError for a line that cannot be taken apart.
    [[nodiscard]] std::optional<DescriptionLine> Next();

    [[noreturn]] void Fail(const std::string& reason) const { throw SkinError(fileName, number, reason); }

private:
    std::string fileName;
    std::string_view rest;
    int number = 0;
};

} // namespace shell

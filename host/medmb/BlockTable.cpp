#include "host/medmb/BlockTable.h"

#include <cctype>
#include <charconv>

namespace medmb {

std::optional<int> RowFromText(std::string_view text) {
    std::string upper;
    for (const char c : text)
        upper.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
    for (int row = 0; row < kBlockRows; ++row)
        if (BlockName(row) == upper)
            return row;
    std::int64_t hz = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), hz);
    if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size())
        return std::nullopt;
    return RowOfFrequency(hz);
}

std::optional<int> RowFromFileName(std::string_view stem) {
    std::size_t at = 0;
    while (at < stem.size()) {
        std::size_t end = at;
        while (end < stem.size() && std::isalnum(static_cast<unsigned char>(stem[end])))
            ++end;
        if (const auto row = RowFromText(stem.substr(at, end - at)))
            return row;
        at = end + 1;
    }
    return std::nullopt;
}

} // namespace medmb

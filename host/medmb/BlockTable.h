// The 21 Band III blocks of Korean DMB: channels 7 to 13, blocks A to C.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace medmb {

inline constexpr int kBlockRows = 21;

// Hz of a row, 0 to 20.
[[nodiscard]] constexpr int BlockFrequency(int row) {
    return 175280000 + 6000000 * (row / 3) + 1728000 * (row % 3);
}

[[nodiscard]] constexpr int BlockChannel(int row) {
    return 7 + row / 3;
}

// "7A" to "13C".
[[nodiscard]] inline std::string BlockName(int row) {
    return std::to_string(BlockChannel(row)) + static_cast<char>('A' + row % 3);
}

[[nodiscard]] inline std::optional<int> RowOfFrequency(std::int64_t hz) {
    for (int row = 0; row < kBlockRows; ++row)
        if (BlockFrequency(row) == hz)
            return row;
    return std::nullopt;
}

// A block name in any case, or a frequency in Hz.
[[nodiscard]] std::optional<int> RowFromText(std::string_view text);

// The row that a file name tells: its stem, or a part of the stem between other signs, is a block name or a frequency.
[[nodiscard]] std::optional<int> RowFromFileName(std::string_view stem);

} // namespace medmb

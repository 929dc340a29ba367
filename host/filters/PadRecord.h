// The label as the view reads it.
#pragma once

#include "dataservice/PadInfo.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace filters {

// What of PadInfo a label fills.
struct PadLabel {
    std::uint32_t charset = 0; // 0: code page 949; PadInfo::kCharsetUcs2
    std::vector<std::uint8_t> bytes;
    bool operator==(const PadLabel&) const = default;

    void Put(PadInfo& record) const;
};

// A label in code page 949 when the page has all its letters, otherwise in UCS-2; at most 192 bytes, cut between characters.
[[nodiscard]] PadLabel MakePadLabel(const std::string& utf8);

} // namespace filters

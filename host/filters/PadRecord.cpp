#include "host/filters/PadRecord.h"

#include "host/ce/Text.h"

#include <algorithm>
#include <cstring>

namespace filters {

namespace {

constexpr std::size_t kWideCharacters = PadInfo::kLabelBytes / 2;

bool IsSurrogate(WCHAR unit) {
    return unit >= 0xD800 && unit <= 0xDFFF;
}

} // namespace

PadLabel MakePadLabel(const std::string& utf8) {
    const WString wide = ce::FromUtf8(utf8);
    PadLabel label;
    const std::string narrow = ce::WideToNarrow(wide);
    if (ce::NarrowToWide(narrow) == wide) {
        std::size_t size = 0;
        while (size < narrow.size()) {
            const std::size_t step = static_cast<std::uint8_t>(narrow[size]) >= 0x81 ? 2 : 1;
            if (size + step > PadInfo::kLabelBytes)
                break;
            size += step;
        }
        size = std::min(size, narrow.size());
        label.bytes.assign(narrow.begin(), narrow.begin() + static_cast<std::ptrdiff_t>(size));
        return label;
    }
    label.charset = PadInfo::kCharsetUcs2;
    // UCS-2 knows no surrogates: such a character becomes one replacement.
    for (std::size_t i = 0; i < wide.size() && label.bytes.size() < kWideCharacters * 2; ++i) {
        WCHAR unit = wide[i];
        if (IsSurrogate(unit)) {
            unit = ce::kReplacement;
            ++i;
        }
        label.bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
        label.bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    }
    return label;
}

void PadLabel::Put(PadInfo& record) const {
    record.dlsCharset = charset;
    std::memset(record.dlsText, 0, sizeof record.dlsText);
    std::ranges::copy(bytes, record.dlsText);
    record.dlsLength = static_cast<std::int32_t>(bytes.size());
}

} // namespace filters

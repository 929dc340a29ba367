// Texts of any content: conversions end, never read beyond the text and agree with each other.
#include "host/ce/Text.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);

    const WString fromNarrow = ce::NarrowToWide(bytes);
    if (fromNarrow.size() > size || !ce::IsWellFormed(fromNarrow))
        std::abort();
    // What has no replacement in it came from good bytes, and these come back.
    if (fromNarrow.find(ce::kReplacement) == WString::npos && ce::WideToNarrow(fromNarrow) != bytes)
        std::abort();

    const WString fromUtf8 = ce::FromUtf8(bytes);
    if (fromUtf8.size() > size || !ce::IsWellFormed(fromUtf8) || ce::FromUtf8(ce::ToUtf8(fromUtf8)) != fromUtf8)
        std::abort();

    WString any(size / 2, WCHAR{0});
    for (std::size_t i = 0; i < any.size(); ++i)
        any[i] = static_cast<WCHAR>(data[2 * i] | data[2 * i + 1] << 8);
    if (ce::IsWellFormed(any) != (ce::FromUtf8(ce::ToUtf8(any)) == any))
        std::abort();
    if (ce::WideToNarrow(any).size() > 2 * any.size())
        std::abort();
    return 0;
}

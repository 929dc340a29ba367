// Format texts of any content with arguments of every kind: the formatter ends, stays in bounds and within a sane length.
#include "platform/wince.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    WString format;
    for (std::size_t i = 0; i < size; ++i)
        format += data[i];
    const double real = size > 8 ? static_cast<double>(data[0]) * 1e300 : 0.5;
    const WString text =
        FormatW(format.c_str(), WTEXT("wide"), static_cast<UINT>(size), real, "narrow\xC7", -1, nullptr);
    if (text.size() > 1100 * (size + 1))
        std::abort();
    return 0;
}

// Descriptions are written by hand: whatever stands in them is accepted or refused with DescriptionError, nothing else.
#include <cstdint>
#include <string_view>

#include "host/headend/Description.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        (void)headend::ParseDescription(text, "fuzz", "/nonexistent");
    } catch (const headend::DescriptionError&) {
        return 0;
    }
    return 0;
}

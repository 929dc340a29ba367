// The record of programme-associated data that the radio source filter fills and hands out by pointer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

// A large record with a fixed layout that belongs to the filter. Only the three label fields are read here;
// the bytes between them hold other data of the filter. The reader borrows the record: it never frees it, and
// it looks at it only while it handles the event that announced it.
struct PadInfo {
    static constexpr std::size_t kLabelBytes = 192;
    static constexpr std::uint32_t kCharsetUcs2 = 4; // EN 300 401 5.2.2.2: ISO/IEC 10646 in big-endian 16-bit units

    std::uint8_t filterData0[976];
    std::uint32_t dlsCharset; // kCharsetUcs2, anything else is an 8-bit multibyte text
    std::uint8_t filterData1[279656];
    std::uint8_t dlsText[kLabelBytes]; // the bytes as broadcast, not terminated
    std::int32_t dlsLength;            // how many bytes of dlsText are valid
};

static_assert(offsetof(PadInfo, dlsCharset) == 976);
static_assert(offsetof(PadInfo, dlsText) == 280636);
static_assert(offsetof(PadInfo, dlsLength) == 280828);
static_assert(sizeof(PadInfo) == 280832);
static_assert(std::is_trivially_copyable_v<PadInfo> && std::is_standard_layout_v<PadInfo>);

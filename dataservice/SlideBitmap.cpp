#include "dataservice/SlideBitmap.h"

#include <algorithm>

namespace {

void Put32(std::span<BYTE, kSlideHeaderBytes> header, std::size_t offset, DWORD value) {
    for (std::size_t i = 0; i < 4; ++i)
        header[offset + i] = static_cast<BYTE>(value >> (8 * i));
}

void Put16(std::span<BYTE, kSlideHeaderBytes> header, std::size_t offset, WORD value) {
    header[offset] = static_cast<BYTE>(value);
    header[offset + 1] = static_cast<BYTE>(value >> 8);
}

constexpr DWORD kInfoHeaderBytes = 40;
constexpr DWORD kBitFields = 3;

} // namespace

void BuildSlideHeader(std::span<BYTE, kSlideHeaderBytes> header) {
    std::ranges::fill(header, BYTE{0});
    Put32(header, 0, kInfoHeaderBytes);
    Put32(header, 4, kSlideWidth);
    Put32(header, 8, static_cast<DWORD>(-kSlideHeight)); // rows from the top down
    Put16(header, 12, 1);                                // planes
    Put16(header, 14, 16);                               // bits per pixel
    Put32(header, 16, kBitFields);
    Put32(header, 40, 0xF800);
    Put32(header, 44, 0x07E0);
    Put32(header, 48, 0x001F);
}

// The slide's bitmap: one block of a device-independent header and 320x240 pixels.
#pragma once

#include <span>

#include "platform/types.h"

inline constexpr int kSlideWidth = 320;
inline constexpr int kSlideHeight = 240;
inline constexpr DWORD kSlideHeaderBytes = 52; // 40-byte header and three colour masks
inline constexpr DWORD kSlideDibBytes = kSlideHeaderBytes + kSlideWidth * kSlideHeight * 2;
static_assert(kSlideDibBytes == 153652);

// Writes the header of a top-down 16-bit 5-6-5 picture.
void BuildSlideHeader(std::span<BYTE, kSlideHeaderBytes> header);

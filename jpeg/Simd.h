// Which vector instructions the build may use; decided once, at compile time.
// DMB_JPEG_PLAIN forces the portable paths, which every other path must equal bit by bit.
#pragma once

#if !defined(DMB_JPEG_PLAIN) && (defined(__SSE2__) || defined(_M_X64))
#define DMB_JPEG_SSE2 1
#include <emmintrin.h>
#endif

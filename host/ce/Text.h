// Texts in and out: the device's narrow text (code page 949, Unified Hangul Code), UTF-16 inside, UTF-8 on
// the host.
//
// All functions are pure and may be called from any thread. None fails: what cannot be said becomes a
// replacement.
#pragma once

#include "platform/types.h"

#include <string>
#include <string_view>

namespace ce {

inline constexpr WCHAR kReplacement = 0xFFFD;

// Code page 949 to UTF-16. A byte that begins no character (a lone lead byte, one before an impossible trail
// byte, 0x80, 0xFF) becomes U+FFFD, and reading goes on with the next byte. NUL is a character like any
// other.
[[nodiscard]] DMB_HOST_API WString NarrowToWide(std::string_view narrow);

// UTF-16 to code page 949; a character that it lacks becomes '?'.
[[nodiscard]] DMB_HOST_API std::string WideToNarrow(WStringView wide);

// UTF-16 to UTF-8 and back; half a surrogate pair, or a broken sequence, becomes U+FFFD.
[[nodiscard]] DMB_HOST_API std::string ToUtf8(WStringView wide);
[[nodiscard]] DMB_HOST_API WString FromUtf8(std::string_view utf8);

// False when half a surrogate pair stands alone; such a text names no file.
[[nodiscard]] DMB_HOST_API bool IsWellFormed(WStringView wide);

} // namespace ce

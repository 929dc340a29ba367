// Label and text character sets (TS 101 756 clause 5.2 and annex C), and the code page of Korean devices.
//
// Everything is brought to UTF-8 first. Korean stations send KS X 1001 bytes under charset 0: a text whose bytes above
// 0x7F all stand in strict pairs (0xA1..0xFE twice, both assigned) is read as Korean, any other as EBU Latin.
#pragma once

#include <string>
#include <string_view>

#include "host/wire/Bytes.h"

namespace wire {

inline constexpr int kCharsetEbuLatin = 0;
inline constexpr int kCharsetLatin2 = 3;
inline constexpr int kCharsetLatin1 = 4;
inline constexpr int kCharsetUcs2 = 6; // big-endian
inline constexpr int kCharsetUtf8 = 15;

// True when there is at least one byte above 0x7F and all of them form assigned KS X 1001 pairs.
[[nodiscard]] bool IsStrictKorean(ByteSpan text);

// UTF-8 of a text as broadcast. Malformed parts become U+FFFD; an unknown charset is read like 0.
[[nodiscard]] std::string DecodeText(ByteSpan text, int charset);

// The same without the trailing blanks and zeros that pad a label, and without what is left of a character that the label's
// end cut off.
[[nodiscard]] std::string DecodeLabel(ByteSpan text, int charset);

// The text's bytes without line break (0x0A), end of headline (0x0B) and word break (0x1F) (EN 300 401 7.4.5.2), and without
// zeros, which would end the text for whoever takes it for a C string; in UCS-2 those are 16-bit characters.
[[nodiscard]] ByteVector RemoveControlCodes(ByteSpan text, int charset);

// Code page 949 bytes. A letter that the page lacks loses its accent, anything else becomes a question mark.
[[nodiscard]] std::string ToCodePage949(std::string_view utf8);
[[nodiscard]] std::string FromCodePage949(std::string_view bytes);

// At most `limit` bytes, never ending inside a double-byte character.
[[nodiscard]] std::string_view CutCodePage949(std::string_view bytes, std::size_t limit);

// A label in code page 949: the broadcast bytes themselves where they are Korean already.
[[nodiscard]] std::string LabelToCodePage949(ByteSpan text, int charset);

// For transmitters: false when a character is not in the set.
[[nodiscard]] bool EncodeEbuLatin(std::string_view utf8, ByteVector& out);
[[nodiscard]] ByteVector EncodeUcs2(std::string_view utf8);

} // namespace wire

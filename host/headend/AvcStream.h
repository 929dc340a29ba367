// H.264 access units in their two framings: the byte stream with start codes (14496-10 annex B) and the
// length-prefixed units of 14496-15, whose parameter sets stand in an AVCDecoderConfigurationRecord.
#pragma once

#include <vector>

#include "host/wire/Bytes.h"

namespace headend {

// The NAL units of a byte stream, without start codes and trailing zeros. They point into the bytes.
[[nodiscard]] std::vector<wire::ByteSpan> SplitByteStream(wire::ByteSpan bytes);

// 14496-15 5.2.4.1 from the first sequence and picture parameter set of the access unit, with 4-byte lengths.
// Empty when there are none.
[[nodiscard]] wire::ByteVector MakeAvcConfiguration(wire::ByteSpan accessUnit);

// The same access unit with 4-byte lengths, without its parameter sets and delimiters.
[[nodiscard]] wire::ByteVector ToLengthPrefixed(wire::ByteSpan accessUnit);

} // namespace headend

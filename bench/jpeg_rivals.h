// The same work with other decoders: a picture into 320x240 RGB565, fitted as ours is.
#pragma once

#include <cstdint>
#include <span>

namespace bench {

// Each returns whether the picture was decoded. `pixels` is 320x240 words.
bool DecodeWithTurbo(std::span<const std::uint8_t> data, std::uint16_t* pixels);
bool DecodeWithStb(std::span<const std::uint8_t> data, std::uint16_t* pixels);

} // namespace bench

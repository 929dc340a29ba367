// What can become of a block: all ways to accept or refuse, in one place.
#pragma once

#include <cstdint>

namespace codec {

enum class BsacStatus : std::uint8_t {
    kOk,
    kShortened, // the unit ends inside the block: decoded with the layers that are there

    // The block could not be decoded; the samples are the last good block, fading.
    kBadLength,         // frame_length is 0 or smaller than the block's own header
    kBadHeader,         // the header does not end inside the block
    kTooManyBands,      // max_sfb is above the number of bands of the rate
    kNoBaseLayer,       // lines to decode but no base layer
    kLongTermPredictor, // ltp_data_present: not part of this object type's use in broadcasting
    kMissing,           // no data: the unit was lost or its rest could not be read
};

[[nodiscard]] constexpr bool IsDecoded(BsacStatus status) {
    return status == BsacStatus::kOk || status == BsacStatus::kShortened;
}

[[nodiscard]] constexpr const char* StatusText(BsacStatus status) {
    switch (status) {
    case BsacStatus::kOk:
        return "ok";
    case BsacStatus::kShortened:
        return "shortened";
    case BsacStatus::kBadLength:
        return "bad block length";
    case BsacStatus::kBadHeader:
        return "header longer than block";
    case BsacStatus::kTooManyBands:
        return "too many scalefactor bands";
    case BsacStatus::kNoBaseLayer:
        return "no base layer";
    case BsacStatus::kLongTermPredictor:
        return "long-term prediction";
    case BsacStatus::kMissing:
        return "missing";
    }
    return "";
}

} // namespace codec

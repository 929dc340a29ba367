#include "host/filters/PictureDecoder.h"

namespace filters {

void PictureDecoder::Push(const AccessUnit& unit, const Sink& sink) {
    if (unit.discontinuity)
        frozen_ = true;
    if (frozen_) {
        if (!unit.randomAccess)
            return;
        decoder_.Flush(); // nothing refers to what came before
        frozen_ = false;
    }
    if (!decoder_.Decode(unit.bytes, unit.time, sink))
        frozen_ = true;
}

void PictureDecoder::Flush() {
    decoder_.Flush();
    frozen_ = true;
}

} // namespace filters

// Access units of the picture to pictures: decoding begins at a random access point, and begins anew at the next one when
// something was lost. What would show damage is not shown.
#pragma once

#include "host/filters/Demultiplexer.h"
#include "host/filters/Picture.h"
#include "host/filters/av/H264Decoder.h"

namespace filters {

class PictureDecoder {
public:
    using Sink = H264Decoder::Sink;

    void Push(const AccessUnit& unit, const Sink& sink);
    void Drain(const Sink& sink) { decoder_.Drain(sink); }
    // Another place follows.
    void Flush();
    // Units wait for a random access point: the picture stands still.
    [[nodiscard]] bool IsFrozen() const { return frozen_; }

private:
    H264Decoder decoder_;
    bool frozen_ = true;
};

} // namespace filters

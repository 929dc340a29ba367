// H.264 access units to pictures, by libavcodec: each picture comes out with its own unit unless the stream itself
// sends pictures out of order.
#pragma once

#include "host/filters/Picture.h"

#include <functional>
#include <memory>

namespace filters {

class H264Decoder {
public:
    using Sink = std::function<void(Picture)>;

    H264Decoder();
    ~H264Decoder();
    H264Decoder(const H264Decoder&) = delete;
    H264Decoder& operator=(const H264Decoder&) = delete;

    // One unit in the byte stream format. False when the decoder refuses it.
    [[nodiscard]] bool Decode(ByteSpan unit, Ticks time, const Sink& sink);
    // Gives the pictures that wait for later ones.
    void Drain(const Sink& sink);
    // Forgets all pictures: the next unit is a random access point.
    void Flush();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace filters

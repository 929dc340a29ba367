// A layer II radio service: logical frames of a sub-channel in, audio frames with their PAD out.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/medmb/PadDecoder.h"
#include "host/wire/LayerTwo.h"

namespace medmb {

struct RadioFrame {
    wire::LayerTwoHeader header;
    wire::ByteSpan bytes; // valid until the next Push
    // Header or check sum wrong: the decoder had better be silent for these 1152 samples.
    bool damaged = false;
    std::vector<PadEvent> events;
};

class RadioChannel {
public:
    struct Counters {
        std::uint64_t frames = 0;
        std::uint64_t bad = 0;
    };

    // One logical frame (24 ms). An audio frame of 24 kHz takes two, and which is the first is not told: the one that
    // begins with a header.
    [[nodiscard]] std::optional<RadioFrame> Push(wire::ByteSpan logicalFrame);
    // Logical frames are missing before the next.
    void Gap();

    [[nodiscard]] PadDecoder& Pad() { return pad; }
    [[nodiscard]] const PadDecoder& Pad() const { return pad; }
    [[nodiscard]] const Counters& Count() const { return counters; }
    [[nodiscard]] std::optional<wire::LayerTwoHeader> Format() const { return format; }

private:
    [[nodiscard]] bool IsGood(const wire::LayerTwoHeader& header) const;
    [[nodiscard]] std::optional<RadioFrame> Finish(const wire::LayerTwoHeader& header, bool good);

    wire::ByteVector frame;
    std::optional<wire::LayerTwoHeader> pending; // a first half waits for its second
    std::optional<wire::LayerTwoHeader> format;  // of the last good frame
    bool awaitingSecond = false;
    PadDecoder pad;
    Counters counters;
};

} // namespace medmb

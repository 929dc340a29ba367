#include "host/medmb/RadioChannel.h"

namespace medmb {

using wire::ByteSpan;
using wire::LayerTwoHeader;

namespace {

// The header that fits a logical frame of this size.
std::optional<LayerTwoHeader> HeaderFor(ByteSpan logicalFrame) {
    const auto header = wire::ParseLayerTwoHeader(logicalFrame);
    if (!header || header->FrameBytes() != logicalFrame.size() * static_cast<std::size_t>(header->LogicalFrames()))
        return std::nullopt;
    return header;
}

} // namespace

// A frame without a check sum, which DAB does not know but some encoders send, is believed when no other kind was heard.
bool RadioChannel::IsGood(const LayerTwoHeader& header) const {
    return header.hasCrc ? wire::LayerTwoCrcOk(header, frame) : !format || !format->hasCrc;
}

void RadioChannel::Gap() {
    pending.reset();
    awaitingSecond = false;
    frame.clear();
    pad.Gap();
}

std::optional<RadioFrame> RadioChannel::Push(ByteSpan logicalFrame) {
    if (logicalFrame.empty())
        return std::nullopt;
    const auto header = HeaderFor(logicalFrame);
    if (pending) {
        const LayerTwoHeader first = *pending;
        if (frame.size() == logicalFrame.size()) {
            wire::AppendBytes(frame, logicalFrame);
            const bool good = IsGood(first);
            // A second half that looks like a header, after a first that proves wrong, is a first half.
            if (good || !header) {
                pending.reset();
                return Finish(first, good);
            }
        }
        pending.reset();
        ++counters.bad;
    }
    if (header) {
        frame.assign(logicalFrame.begin(), logicalFrame.end());
        awaitingSecond = header->halfRate;
        if (header->halfRate) {
            pending = header;
            return std::nullopt;
        }
        return Finish(*header, IsGood(*header));
    }
    if (!format)
        return std::nullopt;
    // No header where one was due: the frame is lost, its PAD may be whole.
    if (format->halfRate) {
        if (frame.size() == logicalFrame.size() && awaitingSecond) {
            awaitingSecond = false;
            wire::AppendBytes(frame, logicalFrame);
            return Finish(*format, false);
        }
        frame.assign(logicalFrame.begin(), logicalFrame.end());
        awaitingSecond = true;
        return std::nullopt;
    }
    frame.assign(logicalFrame.begin(), logicalFrame.end());
    return Finish(*format, false);
}

std::optional<RadioFrame> RadioChannel::Finish(const LayerTwoHeader& header, bool good) {
    ++counters.frames;
    counters.bad += good ? 0 : 1;
    if (good)
        format = header;
    // The place of the PAD depends on bit rate and mode: a damaged header is not asked for it when a good one is known.
    const LayerTwoHeader& layout = good || !format ? header : *format;
    awaitingSecond = false;
    RadioFrame result{header, frame, !good, pad.Push(frame, layout.ScfCrcBytes())};
    return result;
}

} // namespace medmb

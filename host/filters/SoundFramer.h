// Frames of sound out of a stream in which they lie anyhow, as ordinary transport streams carry them:
//
//   ADTS        ISO/IEC 14496-3 1.A.3.2   AAC, a header in front of each frame
//   LATM        ISO/IEC 14496-3 1.7       AAC with its configuration now and then, behind the synchronisation word of LOAS
//   MPEG audio  ISO/IEC 11172-3 2.4.1.3, 13818-3   layers II and III
//
// A synchronisation word may stand in the middle of a frame by chance. So a frame is believed when another one follows it, and
// from then on as long as one follows the other.
#pragma once

#include "host/filters/ProgramTables.h"

#include <functional>

namespace filters {

[[nodiscard]] constexpr bool IsFramed(UnitLayout layout) {
    return layout == UnitLayout::kAdts || layout == UnitLayout::kLatm || layout == UnitLayout::kMpegAudio;
}

struct SoundFrame {
    Bytes bytes; // as the decoder wants them: of AAC without header
    AudioFormat format;
    bool beginsHere = false; // in the piece that was pushed last
};

class SoundFramer {
public:
    using Sink = std::function<void(const SoundFrame&)>;

    SoundFramer() = default;
    explicit SoundFramer(UnitLayout layout) : layout_(layout) {}

    // The next piece of the stream.
    void Push(ByteSpan piece, const Sink& sink);
    // What follows does not continue what came before.
    void Reset();

private:
    // The size of the frame that begins here, with its header; 0 when none does. At least kHeaderBytes are needed.
    [[nodiscard]] std::size_t SizeOf(ByteSpan bytes) const;
    void Take(ByteSpan frame, bool beginsHere, const Sink& sink);
    void TakeAdts(ByteSpan frame, bool beginsHere, const Sink& sink);
    void TakeLatm(ByteSpan frame, bool beginsHere, const Sink& sink);
    void TakeMpegAudio(ByteSpan frame, bool beginsHere, const Sink& sink);

    UnitLayout layout_ = UnitLayout::kPlain;
    Bytes rest_; // not yet decided
    bool locked_ = false;
    // LATM: the configuration in force.
    AudioFormat format_;
    unsigned subFrames_ = 0; // beyond the first
};

} // namespace filters

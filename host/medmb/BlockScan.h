// What a block carries, and when a scan may stop waiting to find out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/medmb/FicDecoder.h"
#include "host/medmb/FrameSource.h"
#include "platform/medmblib.h"

namespace medmb {

enum class BlockState : std::uint8_t {
    Ok,
    NoSource,   // nothing to receive from; known at once
    NoSync,     // no ETI frame within three seconds
    NoServices, // frames, but no readable FIC within another second and a half, or one that lists nothing
    Cancelled,
};

struct BlockReport {
    int frequency = 0;
    BlockState state = BlockState::NoSource;
    std::string reason; // a sentence for a person when the state is not Ok
    Ensemble ensemble;
};

// Limits of one block. On files time is counted in frames (24 ms each), so nothing waits; unreadable bytes count as the frames
// they could have been.
struct ScanLimits {
    Millis sync = 3000;
    Millis fic = 1500;    // from the first frame
    Millis labels = 5000; // from the first readable FIB
};

// Reads until the ensemble is complete or a limit is reached. The report's frequency is the caller's.
[[nodiscard]] BlockReport ScanBlock(FrameSource& source, const Cancellation& cancellation,
                                    const ScanLimits& limits = {});

// Services with a label, in the ensemble's order, in the library's record. One without a label is left out: an empty label
// would end the list.
void FillChannelInfo(const BlockReport& report, _tag_DMB_CHANNEL_INFO& info);

} // namespace medmb

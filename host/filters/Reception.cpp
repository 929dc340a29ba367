#include "host/filters/Reception.h"

#include <utility>

namespace filters {

ReceptionState WhatIsMissing(medmb::SignalState signal, bool scrambled, const medmb::StageCounters& before,
                             const medmb::StageCounters& now) {
    using medmb::SignalState;
    if (signal == SignalState::NoService)
        return ReceptionState::kNoService;
    if (signal == SignalState::Ended)
        return ReceptionState::kNoSource;
    if (signal == SignalState::Good || signal == SignalState::Weak || now.frames != before.frames)
        return scrambled ? ReceptionState::kScrambled : ReceptionState::kNoSignal;
    return now.bytesSkipped != before.bytesSkipped ? ReceptionState::kNoSync : ReceptionState::kNoSource;
}

void Reception::Report(ReceptionState state) {
    if (std::exchange(state_, state) != state && port_ != nullptr)
        port_->OnReception(state);
}

void Reception::Begin(const medmb::Broadcast& broadcast) {
    seen_ = broadcast.Counters();
    Report(ReceptionState::kWaiting);
}

void Reception::ReportMissing(const medmb::Broadcast& broadcast) {
    const medmb::StageCounters now = broadcast.Counters();
    Report(WhatIsMissing(broadcast.Signal(), broadcast.Service().scrambled, seen_, now));
    seen_ = now;
}

void Reception::Report(StreamState stream, bool weak) {
    switch (stream) {
    case StreamState::kUnknown:
        return Report(ReceptionState::kWaiting);
    case StreamState::kScrambled:
        return Report(ReceptionState::kScrambled);
    case StreamState::kForeign:
        return Report(ReceptionState::kNoDecoder);
    case StreamState::kSound:
        return Report(weak ? ReceptionState::kWeak : ReceptionState::kSoundOnly);
    case StreamState::kPicture:
        return Report(weak ? ReceptionState::kWeak : ReceptionState::kPlaying);
    }
}

} // namespace filters

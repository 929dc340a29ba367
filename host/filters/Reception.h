// Why there is no picture or no sound: what a source tells the status port.
#pragma once

#include "host/filters/Outputs.h"
#include "host/filters/ParserStream.h"
#include "host/medmb/Broadcast.h"

namespace filters {

// What is missing when nothing usable of the tuned service comes. `before`: the counters at the look before. The program may ask
// it, too, while no graph runs.
[[nodiscard]] ReceptionState WhatIsMissing(medmb::SignalState signal, bool scrambled,
                                           const medmb::StageCounters& before, const medmb::StageCounters& now);

// One source's reports; belongs to its worker.
class Reception {
public:
    explicit Reception(StatusPort* port) : port_(port) {}

    void Report(ReceptionState state);
    // A run of the broadcast begins.
    void Begin(const medmb::Broadcast& broadcast);
    // Nothing usable came since the last call of this kind, or since the beginning.
    void ReportMissing(const medmb::Broadcast& broadcast);
    // Data come, and this is how far they get. `weak`: some of them are damaged.
    void Report(StreamState stream, bool weak);

private:
    StatusPort* port_;
    ReceptionState state_ = ReceptionState::kIdle;
    medmb::StageCounters seen_;
};

} // namespace filters

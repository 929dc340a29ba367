// Why there is no picture, or no sound: from what the view, the tuner and the filters know. A decision only.
#pragma once

#include "host/ce/Clock.h"
#include "host/filters/Outputs.h"
#include "host/medmb/BlockScan.h"
#include "host/medmb/Broadcast.h"
#include "host/shell/core/Reason.h"
#include "platform/velshell/VelPlayerView.h"
#include "view/DMBView.h"

namespace dmbtv {

// What is missing while the view has stopped a radio without signal: no filter tells it then. Two looks at the tuner's counters are
// compared, a second or more apart.
class StoppedRadio {
public:
    [[nodiscard]] filters::ReceptionState Look(medmb::SignalState signal, const medmb::StageCounters& counters,
                                               ce::Millis now);

private:
    medmb::StageCounters seen;
    ce::Millis seenAt = 0;
    filters::ReceptionState state = filters::ReceptionState::kNoSignal;
};

struct ReceptionLook {
    int session = kSessionNone; // of the selection
    int playMode = kPlayModeStopped;
    bool scanning = false;
    bool noSignal = false; // the view has given up: its own text says so
    filters::ReceptionState reception = filters::ReceptionState::kIdle;
    medmb::BlockState tuning = medmb::BlockState::Ok; // how the last attempt to tune went
};

// None while something plays, is about to, or nothing is chosen.
[[nodiscard]] shell::ReasonShown WhyNoPicture(const ReceptionLook& look);

} // namespace dmbtv

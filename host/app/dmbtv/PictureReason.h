// Why there is no picture, or no sound: from what the view, the tuner and the filters know. A decision only.
#pragma once

#include "host/filters/Outputs.h"
#include "host/medmb/BlockScan.h"
#include "host/shell/core/Reason.h"
#include "platform/velshell/VelPlayerView.h"
#include "view/DMBView.h"

namespace dmbtv {

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

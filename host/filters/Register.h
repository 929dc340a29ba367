// The door of this room: makes the chip's filters and the system's audio renderer known to a class table.
#pragma once

#include "host/ce/Clock.h"
#include "host/dshow/ClassTable.h"
#include "host/filters/Outputs.h"
#include "host/medmb/Broadcast.h"

namespace filters {

// The ports, the clock and the broadcast outlive every filter that is made.
void Register(dshow::ClassTable& table, ce::Clock& clock, const Outputs& outputs,
              medmb::Broadcast& broadcast = medmb::Broadcast::Instance());

} // namespace filters

// The configuration of an ensemble over time: which service lies where in the common interleaved frame, from when on.
#pragma once

#include <vector>

#include "host/headend/Description.h"
#include "host/wire/EtiFrame.h"
#include "host/wire/Fig0.h"

namespace headend {

inline constexpr int kCapacityUnits = 864;
inline constexpr double kFrameSeconds = 0.024;

[[nodiscard]] int FrameAt(double seconds);

// A service as it is during one configuration.
struct ActiveService {
    std::size_t index = 0; // into the description
    int subChannel = 0;
    int kbps = 0;
    LabelDescription label;
    wire::SubChannelEntry entry; // as FIG 0/1 tells it
    int protectionField = 0;     // TPL

    [[nodiscard]] std::size_t BytesPerFrame() const { return static_cast<std::size_t>(kbps) * 3; }
};

struct Configuration {
    int fromFrame = 0;
    std::vector<ActiveService> services;
};

// In order of time; the first begins at frame 0. Throws DescriptionError when a configuration does not fit, with the
// reason.
[[nodiscard]] std::vector<Configuration> MakeConfigurations(const EnsembleDescription& ensemble);

} // namespace headend

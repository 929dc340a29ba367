// What is played on a sub-channel: the bytes of a service for a stretch of frames with one bit rate.
#pragma once

#include <stop_token>
#include <string>
#include <vector>

#include "host/headend/Description.h"
#include "host/headend/TsMux.h"
#include "host/wire/Bytes.h"

namespace headend {

struct Stretch {
    int fromFrame = 0;
    int frames = 0;
    int kbps = 0;
};

struct Programme {
    wire::ByteVector bytes; // stretch.frames * kbps * 3
    std::vector<std::string> warnings;
};

// Throws std::runtime_error when an encoder or a file fails, Interrupted when a stop is asked for. Every call with the same arguments
// makes the same bytes, and calls may run in different threads.
[[nodiscard]] Programme MakeProgramme(const Description& description, const ServiceDescription& service,
                                      const Stretch& stretch, const std::stop_token& stop = {});

// The parts of it, one file each.
[[nodiscard]] Programme MakeTelevision(const Description& description, const ServiceDescription& service,
                                       const Stretch& stretch, const std::stop_token& stop = {});
[[nodiscard]] Programme MakeRadio(const Description& description, const ServiceDescription& service,
                                  const Stretch& stretch);
[[nodiscard]] Programme MakeData(const ServiceDescription& service, const Stretch& stretch);

// The transport stream of a television programme before the outer coder, as many packets as the stretch carries.
[[nodiscard]] TsMuxResult MakeTransportStream(const Description& description, const ServiceDescription& service,
                                              const Stretch& stretch, const std::stop_token& stop = {});

} // namespace headend

// Walks through a source of ETI frames for the sub-commands: finds a service by its label and plays it to the end, as fast as
// possible.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/medmb/ServiceReceiver.h"
#include "host/medmb/SourceSpec.h"

namespace dmbprobe {

// One file, or the one stream, of a source.
struct WalkInput {
    int row = 0;
    std::string name;
    std::unique_ptr<medmb::FrameSource> frames; // null when it cannot be opened; `reason` tells why
    std::string reason;
};

// Owns what the inputs wait on; keep it as long as they are used.
class WalkSource {
public:
    // False, with a sentence on standard error, when the source cannot be opened.
    [[nodiscard]] bool Open(const std::string& text, const char* command);
    [[nodiscard]] std::vector<WalkInput>& Inputs() { return inputs; }

private:
    ce::RealClock clock;
    medmb::Cancellation cancellation{clock};
    std::unique_ptr<medmb::SourceProvider> provider;
    std::vector<WalkInput> inputs;
};

// Visits each frame of an input to its end. False when there was none.
bool ForEachFrame(WalkInput& input, const std::function<void(const wire::EtiFrame&, bool restarted)>& visit);

// The service whose label (or, as 0x..., identifier) is `name`, of the given type, played into `sink` from the source's first
// frame on. The exit status of the sub-command; failures are told on standard error.
[[nodiscard]] int PlayService(const std::string& source, const std::string& name, int libraryType,
                              medmb::ServiceSink& sink, const char* command, medmb::StageCounters& counters);

// For lists: "television", "radio", "DAB+ radio", "data".
[[nodiscard]] const char* KindOf(const medmb::Service& service);
[[nodiscard]] std::string LabelOf(const medmb::Service& service);
[[nodiscard]] std::string HexId(std::uint32_t id, bool isLong);

} // namespace dmbprobe

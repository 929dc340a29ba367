// Programme associated data of one radio service: from the end of each audio frame to texts and objects
// (EN 300 401 7.4).
#pragma once

#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "host/medmb/DynamicLabelAssembler.h"
#include "host/medmb/MotAssembler.h"
#include "host/wire/Pad.h"

namespace medmb {

using PadEvent = std::variant<DynamicLabelText, MotObject>;

class PadDecoder {
public:
    struct Counters {
        std::uint64_t labelSegments = 0;
        std::uint64_t labelSegmentErrors = 0;
        std::uint64_t labels = 0;
        std::uint64_t dataGroups = 0;
        std::uint64_t dataGroupErrors = 0;
        std::uint64_t objects = 0;
    };

    // The X-PAD application type that starts a data group of the slideshow; its continuation is the next number.
    void SetSlideshowType(int type) { slideshowType = type; }

    // One audio frame; `scfCrcBytes` lie between X-PAD and F-PAD. Events in the order in which they became complete.
    [[nodiscard]] std::vector<PadEvent> Push(wire::ByteSpan audioFrame, std::size_t scfCrcBytes);
    // Audio frames are missing before the next: what an X-PAD without indicators continues is no longer known.
    void Gap();
    void Reset();

    [[nodiscard]] const Counters& Count() const { return counters; }

private:
    // A data group as it grows over subfields and frames. What follows its end is padding.
    struct Collector {
        wire::ByteVector bytes;
        std::size_t length = 0; // 0 while not known
        bool active = false;

        void Start(std::size_t knownLength);
    };

    void Subfield(int type, wire::ByteSpan data, std::vector<PadEvent>& events);
    void Continue(wire::ByteSpan data, std::vector<PadEvent>& events);
    void CollectLabel(wire::ByteSpan data, std::vector<PadEvent>& events);
    void CollectObject(wire::ByteSpan data, std::vector<PadEvent>& events);

    int slideshowType = wire::kXPadMotStart;
    std::optional<int> lastType;   // what an X-PAD without indicators continues
    std::size_t lastXPadBytes = 0; // and how long it is
    std::optional<std::size_t> announcedLength;
    Collector label;
    Collector object;
    DynamicLabelAssembler labels;
    MotAssembler objects;
    Counters counters;
};

} // namespace medmb

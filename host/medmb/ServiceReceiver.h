// One tuned service: ETI frames in, transport packets or audio frames with text and slides out.
//
// Follows the service through renames and reconfigurations. A frame whose main stream is lost (a gap in the frame count, a
// damaged stream table) leaves the phase of the outer code where it was.
//
// When the stream table changes, nobody knows whose the sub-channels are until the FIC has told it again. The frames in between
// are held back, so that neither another service's bytes are taken for ours nor ours are lost.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/medmb/Broadcast.h"
#include "host/medmb/FicDecoder.h"
#include "host/medmb/OuterCode.h"
#include "host/medmb/RadioChannel.h"
#include "host/medmb/SignalMeter.h"
#include "host/wire/EtiFrame.h"

namespace medmb {

// Where a service's data go. Spans are valid during the call.
class ServiceSink {
public:
    virtual ~ServiceSink() = default;
    virtual void OnPackets(wire::ByteSpan packets, bool discontinuity) = 0;
    virtual void OnAudio(const RadioFrame& frame, bool discontinuity) = 0;
    virtual void OnText(const DynamicLabelText& text) = 0;
    virtual void OnObject(const MotObject& object) = 0;
};

class ServiceReceiver {
public:
    // `known` is what is known of the ensemble already, so that not even the first frame is lost.
    ServiceReceiver(std::uint32_t serviceIdentifier, ServiceSink& target, FicDecoder known = {})
        : serviceId(serviceIdentifier), sink(target), fic(std::move(known)) {}

    // `restarted`: the frame does not follow the one before, as when a file starts over. Its end may fit to its beginning, so
    // the outer code goes on and finds out; sound is marked, so that the edges are softened.
    void Push(const wire::EtiFrame& frame, bool restarted = false);
    // No frame will come any more: those held back are delivered as what is known tells.
    void Finish() { ReleaseHeld(); }
    // Time for so many frames went by without one.
    void Missing(std::uint64_t frames) { meter.AddMissing(frames); }

    // The service as the FIC tells it now; nothing while it is not there.
    [[nodiscard]] const std::optional<Service>& Current() const { return service; }
    // The service is known and the frame pushed last carried its sub-channel.
    [[nodiscard]] bool Receiving() const { return receiving; }
    [[nodiscard]] const FicDecoder& Fic() const { return fic; }
    [[nodiscard]] const SignalMeter& Meter() const { return meter; }
    [[nodiscard]] StageCounters Counters() const;
    // Frames pushed or known to be lost, the clock of the service.
    [[nodiscard]] std::uint64_t FrameTime() const { return frameTime; }

private:
    [[nodiscard]] std::uint64_t CountGap(const wire::EtiFrame& frame, bool restarted);
    [[nodiscard]] bool TableTrusted(const wire::EtiFrame& frame);
    void FollowService();
    [[nodiscard]] bool MustHold(const wire::EtiFrame& frame, std::uint64_t announced);
    void ReleaseHeld();
    void Deliver(const wire::EtiFrame& frame, std::uint64_t framesLost, FrameQuality& quality);
    void PushTelevision(wire::ByteSpan data, std::uint64_t framesLost, FrameQuality& quality);
    void PushRadio(wire::ByteSpan data, std::uint64_t framesLost, FrameQuality& quality);
    void EmitPackets(const wire::ByteVector& packets, bool gap);

    std::uint32_t serviceId;
    ServiceSink& sink;
    FicDecoder fic;
    OuterDecoder outer;
    RadioChannel radio;
    SignalMeter meter;
    std::optional<Service> service;
    std::uint64_t seenChanges = ~std::uint64_t{0};
    int libraryType = -1;
    int subChannelId = -1;
    std::size_t subChannelBytes = 0;
    bool receiving = false;
    bool discontinuity = false;
    std::optional<int> lastFrameCount;
    std::uint64_t stoodStill = 0; // frames since then that told the same count
    wire::ByteVector lastTable;
    struct HeldFrame {
        wire::ByteVector bytes;
        std::uint64_t framesLost = 0;
        FrameQuality quality;
    };
    std::vector<HeldFrame> held;
    std::uint64_t announcedBefore = 0; // the hold
    wire::ByteVector heardTable;       // the last one whose check sum was right
    std::uint64_t unusable = 0;        // frames in a row whose stream table was not to be trusted
    std::uint64_t frameTime = 0;
    StageCounters counters;
};

} // namespace medmb

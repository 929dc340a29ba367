// One tuned service: ETI frames in, transport packets or audio frames with text and slides out.
//
// Follows the service through renames and reconfigurations. A frame whose main stream is lost (a gap in the frame count, a
// damaged stream table) leaves the phase of the outer code where it was.
#pragma once

#include <optional>
#include <string>

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

    // `restarted`: the frame does not follow the one before, as when a file starts over.
    void Push(const wire::EtiFrame& frame, bool restarted = false);
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
    wire::ByteVector lastTable;
    std::uint64_t unusable = 0; // frames in a row whose stream table was not to be trusted
    std::uint64_t frameTime = 0;
    StageCounters counters;
};

} // namespace medmb

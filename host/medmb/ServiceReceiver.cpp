#include "host/medmb/ServiceReceiver.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "platform/medmblib.h"

namespace medmb {

using wire::ByteSpan;
using wire::EtiFrame;

namespace {

// A longer gap of the frame count (one second) is a jump: how much is missing is not known.
constexpr std::uint64_t kLongestGap = 42;
// A FIC that is silent about the service for so long after the stream table changed (one second) is waited for no longer.
constexpr std::size_t kMostHeld = 42;

} // namespace

// Frames missing before this one, as far as that is known.
std::uint64_t ServiceReceiver::CountGap(const EtiFrame& frame, bool restarted) {
    const int count = frame.FrameCount();
    const auto last = lastFrameCount;
    lastFrameCount = count;
    if (restarted) {
        stoodStill = 0;
        radio.Gap();
        discontinuity = discontinuity || libraryType == DMB_SERVICE_TYPE_DAB_AUDIO;
        return 0;
    }
    if (!last)
        return 0;
    if (count == *last) {
        ++stoodStill;
        return 0;
    }
    // Receivers without a signal let the count stand still for some frames and jump then: nothing is missing.
    const std::uint64_t still = std::exchange(stoodStill, 0);
    const auto gap =
        static_cast<std::uint64_t>((count - *last - 1 + 2 * wire::kEtiFrameCountModulo) % wire::kEtiFrameCountModulo);
    if (gap <= kLongestGap)
        return gap - std::min(gap, still);
    radio.Gap();
    discontinuity = true;
    return 0;
}

// A stream table is believed when its check sum is right, or when it is the one of the frame before.
bool ServiceReceiver::TableTrusted(const EtiFrame& frame) {
    const ByteSpan table = frame.StreamTable();
    const bool same = std::equal(table.begin(), table.end(), lastTable.begin(), lastTable.end());
    lastTable.assign(table.begin(), table.end());
    return same || frame.HeaderCrcOk();
}

void ServiceReceiver::FollowService() {
    if (fic.Changes() == seenChanges)
        return;
    seenChanges = fic.Changes();
    service = fic.FindService(serviceId);
    if (service)
        radio.Pad().SetSlideshowType(service->SlideshowType());
}

// Whether it is uncertain whose this frame's sub-channels are. `announced`: when the FIC had named the service before this frame.
bool ServiceReceiver::MustHold(const EtiFrame& frame, std::uint64_t announced) {
    const ByteSpan table = frame.StreamTable();
    const bool isOld = std::equal(table.begin(), table.end(), heardTable.begin(), heardTable.end());
    const bool changed = !isOld && !heardTable.empty() && frame.HeaderCrcOk();
    if (!isOld && frame.HeaderCrcOk())
        heardTable.assign(table.begin(), table.end());
    // A FIC that has named another sub-channel already runs ahead of the main stream.
    const Component* primary = service ? service->Primary() : nullptr;
    const bool known = subChannelId >= 0 && primary != nullptr && primary->subChannelId == subChannelId;
    if (held.empty() && !changed)
        return false;
    if (held.empty())
        announcedBefore = announced;
    return known && held.size() < kMostHeld && fic.AnnouncedAt(serviceId) == announcedBefore;
}

void ServiceReceiver::ReleaseHeld() {
    for (HeldFrame& early : std::exchange(held, {})) {
        if (const auto frame = EtiFrame::Parse(early.bytes))
            Deliver(*frame, early.framesLost, early.quality);
        meter.Add(early.quality);
    }
}

void ServiceReceiver::Push(const EtiFrame& frame, bool restarted) {
    if (restarted)
        ReleaseHeld();
    const std::uint64_t framesLost = CountGap(frame, restarted);
    counters.framesLost += framesLost;
    ++counters.frames;
    frameTime += 1 + framesLost;
    meter.AddMissing(framesLost);

    FrameQuality quality;
    const std::uint64_t announced = fic.AnnouncedAt(serviceId);
    const std::uint64_t fibsBefore = fic.Fibs();
    const std::uint64_t errorsBefore = fic.FibErrors();
    fic.PushFic(frame.Fic());
    quality.fibs = static_cast<int>(fic.Fibs() - fibsBefore);
    quality.fibErrors = static_cast<int>(fic.FibErrors() - errorsBefore);
    FollowService();

    if (MustHold(frame, announced)) {
        held.push_back({wire::ByteVector(frame.Bytes().begin(), frame.Bytes().end()), framesLost, quality});
        receiving = false;
        return;
    }
    ReleaseHeld();
    Deliver(frame, framesLost, quality);
    meter.Add(quality);
}

void ServiceReceiver::Deliver(const EtiFrame& frame, std::uint64_t framesLost, FrameQuality& quality) {
    receiving = false;
    const Component* primary = service ? service->Primary() : nullptr;
    if (primary != nullptr && TableTrusted(frame)) {
        // When the FIC runs ahead of the main stream the new sub-channel is not there yet and the old one still is.
        ByteSpan data = frame.SubChannel(primary->subChannelId);
        const bool isNew = primary->subChannelId != subChannelId;
        if (data.empty() && isNew && subChannelId >= 0)
            data = frame.SubChannel(subChannelId);
        else if (!data.empty() && (isNew || service->LibraryType() != libraryType || data.size() != subChannelBytes)) {
            if (subChannelId >= 0) {
                outer.Reset();
                radio.Gap();
                discontinuity = true;
            }
            subChannelId = primary->subChannelId;
            libraryType = service->LibraryType();
            subChannelBytes = data.size();
            unusable = 0;
            framesLost = 0;
        }
        receiving = !data.empty() && data.size() == subChannelBytes;
        if (receiving) {
            framesLost += unusable;
            unusable = 0;
            if (libraryType == DMB_SERVICE_TYPE_DMB_VIDEO)
                PushTelevision(data, framesLost, quality);
            else if (libraryType == DMB_SERVICE_TYPE_DAB_AUDIO)
                PushRadio(data, framesLost, quality);
        }
    }
    if (!receiving && subChannelId >= 0)
        unusable = std::min(kLongestGap, unusable + 1 + framesLost);
}

void ServiceReceiver::PushTelevision(ByteSpan data, std::uint64_t framesLost, FrameQuality& quality) {
    const OuterDecoder::Counters before = outer.Count();
    wire::ByteVector packets;
    bool gap = false;
    if (framesLost > 0 && outer.Locked())
        gap = outer.PushLost(framesLost * data.size(), packets);
    gap = outer.Push(data, packets) || gap || framesLost > 0;
    const OuterDecoder::Counters& after = outer.Count();
    quality.packets = static_cast<int>(after.packets - before.packets);
    quality.packetsBad = static_cast<int>(after.bad - before.bad);
    quality.bytesCorrected = static_cast<int>(after.bytesCorrected - before.bytesCorrected);
    EmitPackets(packets, gap);
}

void ServiceReceiver::EmitPackets(const wire::ByteVector& packets, bool gap) {
    discontinuity = discontinuity || gap;
    if (packets.empty())
        return;
    for (std::size_t at = 0; at < packets.size(); at += kTransportPacketBytes) {
        // transport_error_indicator 0, transport_scrambling_control not 0 (ISO 13818-1 2.4.3.2)
        if ((packets[at + 1] & 0x80) == 0 && (packets[at + 3] & 0xC0) != 0)
            ++counters.packetsScrambled;
    }
    sink.OnPackets(packets, discontinuity);
    discontinuity = false;
}

void ServiceReceiver::PushRadio(ByteSpan data, std::uint64_t framesLost, FrameQuality& quality) {
    if (framesLost > 0) {
        radio.Gap();
        discontinuity = true;
    }
    const auto frame = radio.Push(data);
    if (!frame)
        return;
    quality.audioFrames = 1;
    quality.audioFramesBad = frame->damaged ? 1 : 0;
    sink.OnAudio(*frame, discontinuity);
    discontinuity = false;
    for (const PadEvent& event : frame->events) {
        if (const auto* text = std::get_if<DynamicLabelText>(&event))
            sink.OnText(*text);
        else
            sink.OnObject(std::get<MotObject>(event));
    }
}

StageCounters ServiceReceiver::Counters() const {
    StageCounters result = counters;
    result.fibs = fic.Fibs();
    result.fibErrors = fic.FibErrors();
    result.packets = outer.Count().packets;
    result.packetsCorrected = outer.Count().corrected;
    result.packetsBad = outer.Count().bad;
    result.bytesCorrected = outer.Count().bytesCorrected;
    result.resyncs = outer.Count().resyncs;
    result.audioFrames = radio.Count().frames;
    result.audioFramesBad = radio.Count().bad;
    result.labelSegments = radio.Pad().Count().labelSegments;
    result.labels = radio.Pad().Count().labels;
    result.dataGroups = radio.Pad().Count().dataGroups;
    result.dataGroupErrors = radio.Pad().Count().dataGroupErrors;
    result.slides = radio.Pad().Count().objects;
    return result;
}

} // namespace medmb

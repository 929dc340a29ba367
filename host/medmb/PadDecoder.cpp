#include "host/medmb/PadDecoder.h"

#include <algorithm>
#include <array>
#include <utility>

namespace medmb {

using wire::ByteSpan;

namespace {

constexpr std::size_t kMaxDataGroupBytes = 16383;
// Four indicators and four of the longest subfields.
constexpr std::size_t kMaxXPadBytes = 4 + 4 * 48;
// Header and check sum of the audio frame come before any X-PAD.
constexpr std::size_t kAudioHeaderBytes = 6;

// The length of a MOT data group from its own fields, for senders that leave out the length indicator; 0 when the
// fields are not there yet, kMaxDataGroupBytes + 1 when they cannot tell.
std::size_t LengthFromMotGroup(ByteSpan bytes) {
    constexpr std::size_t kUnknown = kMaxDataGroupBytes + 1;
    if (bytes.size() < 2)
        return 0;
    const bool extension = (bytes[0] & 0x80) != 0;
    const bool crc = (bytes[0] & 0x40) != 0;
    const bool segment = (bytes[0] & 0x20) != 0;
    const bool userAccess = (bytes[0] & 0x10) != 0;
    if (!segment || !userAccess)
        return kUnknown;
    const std::size_t userAt = (extension ? 4u : 2u) + 2u;
    if (bytes.size() <= userAt)
        return 0;
    const std::size_t sizeAt = userAt + 1 + (bytes[userAt] & 0x0F);
    if (bytes.size() < sizeAt + 2)
        return 0;
    return sizeAt + 2 + (wire::Get16(bytes, sizeAt) & 0x1FFF) + (crc ? 2 : 0);
}

} // namespace

void PadDecoder::Collector::Start(std::size_t knownLength) {
    bytes.clear();
    length = knownLength;
    active = true;
}

void PadDecoder::Gap() {
    lastType.reset();
    lastXPadBytes = 0;
    announcedLength.reset();
    label.active = false;
    object.active = false;
}

void PadDecoder::Reset() {
    Gap();
    labels.Reset();
    objects.Reset();
}

std::vector<PadEvent> PadDecoder::Push(ByteSpan frame, std::size_t scfCrcBytes) {
    std::vector<PadEvent> events;
    if (frame.size() < kAudioHeaderBytes + scfCrcBytes + wire::kFPadBytes)
        return events;
    const wire::FPad fPad = wire::ParseFPad(frame[frame.size() - 2], frame[frame.size() - 1]);
    if (fPad.type != 0 || fPad.xPad == wire::XPadKind::None)
        return events;

    // The X-PAD in logical order: its first byte is the one next to the ScF-CRC.
    std::array<std::uint8_t, kMaxXPadBytes> logical;
    const std::size_t end = frame.size() - wire::kFPadBytes - scfCrcBytes;
    const std::size_t available = std::min(kMaxXPadBytes, end - kAudioHeaderBytes);
    for (std::size_t i = 0; i < available; ++i)
        logical[i] = frame[end - 1 - i];
    const ByteSpan xPad = ByteSpan(logical).first(available);

    if (!fPad.contentsIndicator) {
        const std::size_t length = fPad.xPad == wire::XPadKind::Short ? wire::kXPadShortBytes : lastXPadBytes;
        if (length <= xPad.size())
            Continue(xPad.first(length), events);
        return events;
    }
    if (fPad.xPad == wire::XPadKind::Short) {
        if (xPad.size() < wire::kXPadShortBytes)
            return events;
        lastXPadBytes = wire::kXPadShortBytes;
        Subfield(xPad[0] & 0x1F, xPad.subspan(1, wire::kXPadShortBytes - 1), events);
        return events;
    }
    const wire::ContentsIndicatorList list = wire::ParseContentsIndicators(xPad);
    if (list.TotalBytes() > xPad.size()) {
        // Longer than the frame itself: the indicators are damaged.
        Gap();
        return events;
    }
    lastXPadBytes = list.TotalBytes();
    if (list.count == 0)
        lastType.reset();
    std::size_t at = list.listBytes;
    for (std::size_t i = 0; i < list.count; ++i) {
        Subfield(list.items[i].type, xPad.subspan(at, list.items[i].length), events);
        at += list.items[i].length;
    }
    return events;
}

void PadDecoder::Continue(ByteSpan data, std::vector<PadEvent>& events) {
    if (!lastType)
        return;
    if (*lastType == wire::kXPadLabelContinuation)
        CollectLabel(data, events);
    else if (*lastType == slideshowType + 1)
        CollectObject(data, events);
}

void PadDecoder::Subfield(int type, ByteSpan data, std::vector<PadEvent>& events) {
    lastType = type;
    if (type == wire::kXPadDataGroupLength) {
        announcedLength = wire::ParseDataGroupLength(data);
    } else if (type == wire::kXPadLabelStart) {
        label.Start(0);
        lastType = wire::kXPadLabelContinuation;
        CollectLabel(data, events);
    } else if (type == wire::kXPadLabelContinuation) {
        CollectLabel(data, events);
    } else if (type == slideshowType) {
        object.Start(announcedLength.value_or(0));
        announcedLength.reset();
        lastType = slideshowType + 1;
        CollectObject(data, events);
    } else if (type == slideshowType + 1) {
        CollectObject(data, events);
    } else {
        // Somebody else's data group; the length was told for it.
        announcedLength.reset();
    }
}

void PadDecoder::CollectLabel(ByteSpan data, std::vector<PadEvent>& events) {
    if (!label.active)
        return;
    wire::AppendBytes(label.bytes, data);
    if (label.bytes.size() < 2)
        return;
    if (label.bytes.size() < wire::DynamicLabelSegmentBytes(label.bytes[0], label.bytes[1]))
        return;
    label.active = false;
    const auto segment = wire::ParseDynamicLabelSegment(label.bytes);
    if (!segment) {
        ++counters.labelSegmentErrors;
        return;
    }
    ++counters.labelSegments;
    if (auto text = labels.Push(*segment)) {
        ++counters.labels;
        events.emplace_back(std::move(*text));
    }
}

void PadDecoder::CollectObject(ByteSpan data, std::vector<PadEvent>& events) {
    if (!object.active)
        return;
    wire::AppendBytes(object.bytes, data);
    if (object.length == 0)
        object.length = LengthFromMotGroup(object.bytes);
    if (object.length == 0 || object.bytes.size() < object.length) {
        if (object.length > kMaxDataGroupBytes || object.bytes.size() > kMaxDataGroupBytes)
            object.active = false;
        return;
    }
    object.active = false;
    const auto group = wire::ParseMscDataGroup(ByteSpan(object.bytes).first(object.length));
    if (!group) {
        ++counters.dataGroupErrors;
        return;
    }
    ++counters.dataGroups;
    if (auto finished = objects.Push(*group)) {
        ++counters.objects;
        events.emplace_back(std::move(*finished));
    }
}

} // namespace medmb

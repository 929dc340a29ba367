#include "host/headend/PadEncoder.h"

#include <algorithm>

#include "host/wire/DynamicLabel.h"
#include "host/wire/Mot.h"

namespace headend {

namespace {

constexpr double kTextEvery = 2.0;
constexpr std::size_t kSegmentBytes = 1000;

// The largest subfield that is no longer than `room`; 0 when there is none.
std::size_t LargestSubfield(std::size_t room) {
    std::size_t best = 0;
    for (const std::uint8_t length : wire::kXPadLengths) {
        if (length <= room)
            best = length;
    }
    return best;
}

// The smallest subfield that holds `bytes` and is no longer than `room`, else the largest that fits.
std::size_t SubfieldFor(std::size_t bytes, std::size_t room) {
    for (const std::uint8_t length : wire::kXPadLengths) {
        if (length >= bytes && length <= room)
            return length;
    }
    return LargestSubfield(room);
}

wire::ByteVector TakeBytes(const wire::ByteVector& from, std::size_t& sent, std::size_t count) {
    const std::size_t taken = std::min(count, from.size() - sent);
    wire::ByteVector out(from.begin() + static_cast<std::ptrdiff_t>(sent),
                         from.begin() + static_cast<std::ptrdiff_t>(sent + taken));
    sent += taken;
    out.resize(count); // what lies behind the end of a group is padding
    return out;
}

} // namespace

wire::ByteVector MakeDlPlus(const std::vector<DlPlusTag>& tags, bool itemToggle) {
    // Command 0, item toggle, item running, number of tags less one.
    wire::ByteVector out = {static_cast<std::uint8_t>((itemToggle ? 0x08 : 0) | 0x04 | ((tags.size() - 1) & 3))};
    for (const DlPlusTag& tag : tags) {
        out.push_back(static_cast<std::uint8_t>(tag.contentType & 0x7F));
        out.push_back(static_cast<std::uint8_t>(tag.start & 0x7F));
        out.push_back(static_cast<std::uint8_t>((tag.length - 1) & 0x7F));
    }
    return out;
}

PadEncoder::PadEncoder(PadSettings padSettings) : settings(std::move(padSettings)) {}

void PadEncoder::QueueTexts(double seconds) {
    bool isNew = false;
    while (nextText < settings.texts.size() && settings.texts[nextText].from <= seconds) {
        ++nextText;
        isNew = true;
    }
    if (nextText == 0 || (!isNew && seconds < nextTextRepetition) || (!isNew && !labels.empty()))
        return;
    if (isNew)
        toggle = !toggle;
    nextTextRepetition = seconds + kTextEvery;
    // A label segment that has begun is finished; the others of the old text are dropped.
    if (labels.size() > 1)
        labels.resize(labelSent > 0 ? 1 : 0);

    const PadText& text = settings.texts[nextText - 1];
    const wire::ByteSpan bytes = wire::ByteSpan(text.bytes).first(std::min<std::size_t>(text.bytes.size(), 128));
    if (bytes.empty()) {
        wire::ByteVector out;
        wire::AppendDynamicLabelSegment(out, {.toggle = toggle,
                                              .first = true,
                                              .last = true,
                                              .isCommand = true,
                                              .command = wire::kLabelCommandRemove,
                                              .charset = 0,
                                              .segment = 0,
                                              .text = {}});
        labels.push_back(std::move(out));
        return;
    }
    for (std::size_t at = 0; at < bytes.size(); at += wire::kLabelSegmentBytes) {
        const std::size_t length = std::min(wire::kLabelSegmentBytes, bytes.size() - at);
        wire::ByteVector out;
        wire::AppendDynamicLabelSegment(out, {.toggle = toggle,
                                              .first = at == 0,
                                              .last = at + length == bytes.size(),
                                              .isCommand = false,
                                              .command = 0,
                                              .charset = text.charset,
                                              .segment = static_cast<int>(at / wire::kLabelSegmentBytes),
                                              .text = bytes.subspan(at, length)});
        labels.push_back(std::move(out));
    }
    if (!text.dlPlus.empty()) {
        wire::ByteVector out;
        wire::AppendDynamicLabelSegment(out, {.toggle = toggle,
                                              .first = true,
                                              .last = true,
                                              .isCommand = true,
                                              .command = wire::kLabelCommandDlPlus,
                                              .charset = 0,
                                              .segment = 0,
                                              .text = text.dlPlus});
        labels.push_back(std::move(out));
    }
}

void PadEncoder::MakeSlideGroups(const PadSlide& slide, bool repeated) {
    repetition = repeated ? std::max(0, repetition - 1) : 3;
    wire::MotHeader header;
    header.bodySize = slide.body.size();
    header.contentType = wire::kMotContentImage;
    header.contentSubtype = slide.contentSubtype;
    header.contentName = slide.contentName;
    // TriggerTime with the validity flag at 0: now (TS 101 499 6.2.3).
    wire::ByteVector parameters;
    wire::AppendMotParameter(parameters, wire::kMotParameterTriggerTime, wire::ByteVector(4));
    const wire::ByteVector headerBytes = wire::WriteMotHeader(header, parameters);

    std::vector<wire::ByteVector> made;
    const auto add = [&](int type, int segment, bool last, wire::ByteSpan data, std::uint8_t& continuity) {
        wire::ByteVector segmentBytes;
        wire::AppendMotSegment(segmentBytes, {.repetition = 0, .data = data});
        wire::MscDataGroup group;
        group.type = type;
        group.continuity = continuity;
        group.repetition = repetition;
        group.hasSegment = true;
        group.lastSegment = last;
        group.segment = segment;
        group.hasTransportId = true;
        group.transportId = slide.transportId;
        group.data = segmentBytes;
        wire::ByteVector out;
        wire::AppendMscDataGroup(out, group);
        continuity = (continuity + 1) & 15;
        made.push_back(std::move(out));
    };
    add(wire::kDataGroupMotHeader, 0, true, headerBytes, headerContinuity);
    const std::size_t count = (slide.body.size() + kSegmentBytes - 1) / kSegmentBytes;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = i * kSegmentBytes;
        add(wire::kDataGroupMotBody, static_cast<int>(i), i + 1 == count,
            wire::ByteSpan(slide.body).subspan(at, std::min(kSegmentBytes, slide.body.size() - at)), bodyContinuity);
    }
    if (slide.shuffled)
        std::reverse(made.begin(), made.end());
    groups.insert(groups.end(), std::make_move_iterator(made.begin()), std::make_move_iterator(made.end()));
}

void PadEncoder::QueueSlides(double seconds) {
    bool isNew = false;
    while (nextSlide < settings.slides.size() && settings.slides[nextSlide].from <= seconds) {
        ++nextSlide;
        isNew = true;
    }
    if (nextSlide == 0 || (!isNew && !groups.empty()))
        return;
    if (isNew && !groups.empty())
        groups.resize(groupSent > 0 ? 1 : 0); // the group under way is finished, the rest of the old slide dropped
    MakeSlideGroups(settings.slides[nextSlide - 1], !isNew);
}

void PadEncoder::Fill(wire::ByteVector& frame, std::size_t scfCrcBytes, double seconds) {
    wire::FPad fPad;
    wire::ByteVector xPad; // in logical order, from the byte next to the ScF-CRC
    if (settings.padBytes > 0) {
        QueueTexts(seconds);
        if (settings.padBytes > wire::kXPadShortBytes)
            QueueSlides(seconds);
        xPad = settings.padBytes > wire::kXPadShortBytes ? TakeVariable(fPad) : TakeShort(fPad);
    }
    const auto fBytes = wire::WriteFPad(fPad);
    std::copy(fBytes.begin(), fBytes.end(), frame.end() - static_cast<std::ptrdiff_t>(wire::kFPadBytes));
    std::copy(xPad.rbegin(), xPad.rend(),
              frame.end() - static_cast<std::ptrdiff_t>(wire::kFPadBytes + scfCrcBytes + xPad.size()));
}

wire::ByteVector PadEncoder::TakeShort(wire::FPad& fPad) {
    if (labels.empty())
        return {};
    fPad.xPad = wire::XPadKind::Short;
    fPad.contentsIndicator = labelSent == 0;
    wire::ByteVector xPad;
    if (fPad.contentsIndicator)
        xPad.push_back(wire::kXPadLabelStart);
    wire::AppendBytes(xPad, TakeBytes(labels.front(), labelSent, wire::kXPadShortBytes - xPad.size()));
    if (labelSent == labels.front().size()) {
        labels.pop_front();
        labelSent = 0;
    }
    return xPad;
}

// The whole X-PAD without indicators: as long as the last one, and all of it goes on with the last application.
wire::ByteVector PadEncoder::TakeContinuation() {
    wire::ByteVector xPad = TakeBytes(groups.front(), groupSent, lastTotal);
    if (groupSent == groups.front().size()) {
        groups.pop_front();
        groupSent = 0;
        lastWasGroup = false;
    }
    return xPad;
}

wire::ByteVector PadEncoder::TakeVariable(wire::FPad& fPad) {
    const bool groupUnderWay = !groups.empty() && groupSent > 0;
    if (labels.empty() && groups.empty()) {
        // Frames without X-PAD between do not end a group, but no group is under way here.
        lastWasGroup = false;
        return {};
    }
    fPad.xPad = wire::XPadKind::Variable;
    if (labels.empty() && groupUnderWay && lastWasGroup)
        return TakeContinuation();
    fPad.contentsIndicator = true;

    std::vector<Subfield> fields;
    std::size_t dataBytes = 0;
    lastWasGroup = false;
    const auto room = [&](std::size_t moreFields) -> std::size_t {
        const std::size_t count = fields.size() + moreFields;
        const std::size_t list = count + (count < wire::kXPadMaxIndicators ? 1 : 0);
        return count > wire::kXPadMaxIndicators || dataBytes + list > settings.padBytes
                   ? 0
                   : settings.padBytes - dataBytes - list;
    };
    const auto add = [&](int type, std::size_t length, wire::ByteVector bytes) {
        dataBytes += length;
        fields.push_back({type, length, std::move(bytes)});
    };
    // One label segment a frame, in one or two subfields; slides get the rest.
    for (int i = 0; i < 2 && !labels.empty(); ++i) {
        const std::size_t length = SubfieldFor(labels.front().size() - labelSent, room(1));
        if (length == 0)
            break;
        const int type = labelSent == 0 ? wire::kXPadLabelStart : wire::kXPadLabelContinuation;
        add(type, length, TakeBytes(labels.front(), labelSent, length));
        if (labelSent == labels.front().size()) {
            labels.pop_front();
            labelSent = 0;
            break;
        }
    }
    while (!groups.empty()) {
        int type = wire::kXPadMotContinuation;
        if (groupSent == 0) {
            // The length indicator comes right before the group that it announces.
            if (LargestSubfield(room(2) < 4 ? 0 : room(2) - 4) == 0)
                break;
            wire::ByteVector length;
            wire::AppendDataGroupLength(length, groups.front().size());
            add(wire::kXPadDataGroupLength, 4, std::move(length));
            type = wire::kXPadMotStart;
        }
        const std::size_t length = SubfieldFor(groups.front().size() - groupSent, room(1));
        if (length == 0)
            break;
        add(type, length, TakeBytes(groups.front(), groupSent, length));
        lastWasGroup = true;
        if (groupSent == groups.front().size()) {
            groups.pop_front();
            groupSent = 0;
            lastWasGroup = false;
        }
    }

    wire::ByteVector xPad;
    for (const Subfield& field : fields)
        xPad.push_back(wire::WriteContentsIndicator({field.type, field.length}));
    if (fields.size() < wire::kXPadMaxIndicators)
        xPad.push_back(wire::kXPadEndMarker);
    for (const Subfield& field : fields)
        wire::AppendBytes(xPad, field.bytes);
    lastTotal = xPad.size();
    return xPad;
}

} // namespace headend

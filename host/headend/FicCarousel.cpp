#include "host/headend/FicCarousel.h"

#include <algorithm>

#include "host/wire/Fib.h"
#include "host/wire/Fig0.h"
#include "host/wire/Fig1.h"
#include "host/wire/Pad.h"

namespace headend {

namespace {

constexpr int kFibsPerFrame = 3;
constexpr std::size_t kFigBytes = 29; // of a group's data field
constexpr int kOften = 4;             // 96 ms
constexpr int kSeldom = 42;           // once a second
constexpr int kAnnounceFrames = 250;  // 6 s before a reconfiguration (6.5)

// 8.1.13: which characters make the short label. With two bytes a character both bits are set.
std::uint16_t ShortMask(const LabelDescription& label, std::size_t bytes) {
    if (label.shortText.empty() || label.coding == TextCoding::kUcs2 || label.coding == TextCoding::kUtf8)
        return bytes > 8 ? 0xFF00 : static_cast<std::uint16_t>(0xFFFF << (16 - std::min<std::size_t>(bytes, 16)));
    const wire::ByteVector whole = EncodeText(label.text, label.coding);
    const wire::ByteVector part = EncodeText(label.shortText, label.coding);
    std::uint16_t mask = 0;
    std::size_t next = 0;
    for (std::size_t i = 0; i < whole.size() && i < 16 && next < part.size(); ++i) {
        if (whole[i] == part[next]) {
            mask |= static_cast<std::uint16_t>(0x8000 >> i);
            ++next;
        }
    }
    return mask;
}

wire::ByteVector StartFig0(int extension, bool longIds, bool next) {
    wire::ByteVector data;
    wire::AppendFig0Header(
        data, {.nextConfiguration = next, .otherEnsemble = false, .longIds = longIds, .extension = extension});
    return data;
}

wire::ServiceEntry ServiceEntryOf(const ServiceDescription& service, const ActiveService& active) {
    wire::ComponentEntry component;
    component.subChannelId = active.subChannel;
    component.primary = true;
    component.conditionalAccess = service.scrambledFlag;
    switch (service.kind) {
    case ServiceKind::kRadio:
        component.transport = wire::Transport::StreamAudio;
        component.type = wire::kAudioTypeLayerTwo;
        break;
    case ServiceKind::kDabPlus:
        component.transport = wire::Transport::StreamAudio;
        component.type = wire::kAudioTypeDabPlus;
        break;
    case ServiceKind::kTelevision:
        component.transport = wire::Transport::StreamData;
        component.type = wire::kDataTypeTransport;
        break;
    case ServiceKind::kStreamData:
        component.transport = wire::Transport::StreamData;
        component.type = service.dataType;
        break;
    case ServiceKind::kPacketData:
        component.transport = wire::Transport::Packet;
        component.componentId = active.subChannel;
        break;
    }
    return {
        .serviceId = service.id, .local = false, .accessId = service.scrambledFlag ? 1 : 0, .components = {component}};
}

} // namespace

FicCarousel::FicCarousel(const EnsembleDescription& ensembleDescription,
                         const std::vector<Configuration>& allConfigurations, std::int64_t startClock)
    : ensemble(ensembleDescription), configurations(allConfigurations), clock(startClock) {
    Rebuild();
}

void FicCarousel::Add(int type, wire::ByteVector data, int period) {
    // Groups of a kind start spread over their period, so that no frame gets them all.
    groups.push_back({type, std::move(data), period, frame + static_cast<int>(groups.size()) % period});
}

void FicCarousel::Rebuild() {
    groups.clear();
    AddConfiguration(configurations[current], false);
    if (announcing)
        AddConfiguration(configurations[current + 1], true);
    AddServices(configurations[current]);
    AddLabels(configurations[current]);
}

// FIG 0/1 and 0/2, as many entries in a group as fit.
void FicCarousel::AddConfiguration(const Configuration& configuration, bool next) {
    wire::ByteVector data = StartFig0(1, false, next);
    for (const ActiveService& active : configuration.services) {
        if (data.size() + 4 > kFigBytes) {
            Add(0, std::move(data), kOften);
            data = StartFig0(1, false, next);
        }
        wire::AppendFig0_1(data, active.entry);
    }
    if (data.size() > 1)
        Add(0, std::move(data), kOften);
    // Sound and data services go in groups of their own; the kind that the description begins with leads.
    const bool longFirst =
        !configuration.services.empty() && ensemble.services[configuration.services.front().index].HasLongId();
    for (const bool longIds : {longFirst, !longFirst}) {
        data = StartFig0(2, longIds, next);
        for (const ActiveService& active : configuration.services) {
            const ServiceDescription& service = ensemble.services[active.index];
            if (service.HasLongId() != longIds)
                continue;
            if (data.size() + 7 > kFigBytes) {
                Add(0, std::move(data), kOften);
                data = StartFig0(2, longIds, next);
            }
            wire::AppendFig0_2(data, ServiceEntryOf(service, active), longIds);
        }
        if (data.size() > 1)
            Add(0, std::move(data), kOften);
    }
}

// What is told of each service beside its place.
void FicCarousel::AddServices(const Configuration& configuration) {
    wire::ByteVector country = StartFig0(9, false, false);
    wire::AppendFig0_9(
        country,
        {.localTimeOffset = ensemble.localTimeOffset, .extendedCountryCode = ensemble.ecc, .internationalTable = 1});
    Add(0, std::move(country), kSeldom);
    for (const ActiveService& active : configuration.services) {
        const ServiceDescription& service = ensemble.services[active.index];
        const bool longId = service.HasLongId();
        if (service.kind == ServiceKind::kPacketData) {
            wire::ByteVector packet = StartFig0(3, false, false);
            wire::AppendFig0_3(packet, {.componentId = active.subChannel,
                                        .type = service.dataType,
                                        .subChannelId = active.subChannel,
                                        .packetAddress = 1});
            Add(0, std::move(packet), kSeldom);
        }
        wire::ByteVector definition = StartFig0(8, longId, false);
        wire::ComponentDefinition component{.serviceId = service.id};
        component.longForm = service.kind == ServiceKind::kPacketData;
        component.componentId = active.subChannel;
        component.subChannelId = active.subChannel;
        wire::AppendFig0_8(definition, component, longId);
        Add(0, std::move(definition), kSeldom);

        wire::UserApplicationEntry applications{.serviceId = service.id, .componentIdInService = 0, .applications = {}};
        if (service.kind == ServiceKind::kTelevision)
            applications.applications.push_back({wire::kUserApplicationDmbVideo, {}});
        else if (service.kind == ServiceKind::kRadio && !service.slides.empty())
            applications.applications.push_back(
                {wire::kUserApplicationSlideshow, {wire::kXPadMotStart, wire::kDataTypeMot}});
        if (!applications.applications.empty()) {
            wire::ByteVector data = StartFig0(13, longId, false);
            wire::AppendFig0_13(data, applications, longId);
            Add(0, std::move(data), kSeldom);
        }
        if (service.programmeType > 0 && !longId) {
            wire::ByteVector data = StartFig0(17, false, false);
            wire::AppendFig0_17(data, {.serviceId = static_cast<std::uint16_t>(service.id),
                                       .dynamic = false,
                                       .language = {},
                                       .code = service.programmeType});
            Add(0, std::move(data), kSeldom);
        }
        if (service.announcements > 0 && !longId) {
            wire::ByteVector data = StartFig0(18, false, false);
            wire::AppendFig0_18(data, {.serviceId = static_cast<std::uint16_t>(service.id),
                                       .types = static_cast<std::uint16_t>(service.announcements),
                                       .clusters = {1}});
            Add(0, std::move(data), kSeldom);
        }
    }
}

void FicCarousel::AddLabels(const Configuration& configuration) {
    AddLabel(ensemble.label, static_cast<int>(wire::LabelOf::Ensemble), ensemble.id, kSeldom);
    for (const ActiveService& active : configuration.services) {
        const ServiceDescription& service = ensemble.services[active.index];
        const auto of = service.HasLongId() ? wire::LabelOf::Data : wire::LabelOf::Programme;
        AddLabel(active.label, static_cast<int>(of), service.id, kSeldom);
    }
}

void FicCarousel::AddLabel(const LabelDescription& description, int extension, std::uint32_t id, int period) {
    const wire::LabelTarget target{.of = static_cast<wire::LabelOf>(extension), .id = id};
    wire::Label label;
    label.charset = CharsetOf(description.coding);
    label.target = target;
    wire::ByteVector bytes = EncodeText(description.text, description.coding);
    label.shortMask = ShortMask(description, bytes.size());
    while (description.coding == TextCoding::kUcs2 && bytes.size() + 1 < wire::kLabelBytes)
        wire::Append16(bytes, ' ');
    bytes.resize(wire::kLabelBytes, ' ');
    std::copy(bytes.begin(), bytes.end(), label.text.begin());
    wire::ByteVector data;
    wire::AppendFig1(data, label);
    Add(1, std::move(data), period);

    // The extended label in UTF-8, in as many segments as its bytes need.
    const auto* text = reinterpret_cast<const std::uint8_t*>(description.extended.data());
    const wire::ByteSpan extended(text, description.extended.size());
    constexpr std::size_t kSegment = 20;
    const std::size_t count = (extended.size() + kSegment - 1) / kSegment;
    for (std::size_t i = 0; i < count; ++i) {
        wire::ByteVector segment;
        wire::AppendFig2(segment,
                         {.target = target,
                          .toggle = false,
                          .segment = static_cast<int>(i),
                          .ucs2 = false,
                          .segmentCount = static_cast<int>(count),
                          .text = extended.subspan(i * kSegment, std::min(kSegment, extended.size() - i * kSegment))});
        Add(2, std::move(segment), period);
    }
}

wire::ByteVector FicCarousel::EnsembleGroup() const {
    const int count = (ensemble.firstFrame + frame) % 5000;
    wire::EnsembleInformation info;
    info.ensembleId = ensemble.id;
    info.cifCountHigh = count / 250;
    info.cifCountLow = count % 250;
    if (announcing) {
        info.changeFlags = 3;
        info.occurrenceChange = (ensemble.firstFrame + configurations[current + 1].fromFrame) % 250;
    }
    wire::ByteVector data = StartFig0(0, false, false);
    wire::AppendFig0_0(data, info);
    return data;
}

wire::ByteVector FicCarousel::TimeGroup() const {
    const std::int64_t milliseconds =
        (clock - ensemble.localTimeOffset * std::int64_t{1800}) * 1000 + frame * std::int64_t{24};
    const std::int64_t seconds = milliseconds / 1000;
    wire::DateAndTime time;
    time.modifiedJulianDate = static_cast<std::uint32_t>(seconds / 86400 + 40587);
    time.longForm = true;
    time.hours = static_cast<int>(seconds / 3600 % 24);
    time.minutes = static_cast<int>(seconds / 60 % 60);
    time.seconds = static_cast<int>(seconds % 60);
    time.milliseconds = static_cast<int>(milliseconds % 1000);
    wire::ByteVector data = StartFig0(10, false, false);
    wire::AppendFig0_10(data, time);
    return data;
}

wire::ByteVector FicCarousel::Next() {
    if (current + 1 < configurations.size()) {
        const int change = configurations[current + 1].fromFrame;
        if (frame >= change) {
            ++current;
            announcing = false;
            Rebuild();
        } else if (!announcing && frame >= change - kAnnounceFrames) {
            announcing = true;
            Rebuild();
        }
    }
    wire::FibWriter fibs[kFibsPerFrame];
    // FIG 0/0 leads the first block of each transmission frame, that is every fourth of ours (6.4).
    if ((ensemble.firstFrame + frame) % kOften == 0)
        (void)fibs[0].Add(0, EnsembleGroup());
    if (frame % kSeldom == 0)
        (void)fibs[2].Add(0, TimeGroup());
    // The most overdue first; a group that does not fit waits, a smaller one may take the room.
    std::stable_sort(groups.begin(), groups.end(), [](const Group& a, const Group& b) { return a.due < b.due; });
    for (Group& group : groups) {
        if (group.due > frame)
            break;
        for (wire::FibWriter& fib : fibs) {
            if (fib.Add(group.type, group.data)) {
                group.due = frame + group.period;
                break;
            }
        }
    }
    ++frame;
    wire::ByteVector out;
    for (wire::FibWriter& fib : fibs)
        wire::AppendBytes(out, fib.Finish());
    return out;
}

} // namespace headend

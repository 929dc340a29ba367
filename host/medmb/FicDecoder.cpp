#include "host/medmb/FicDecoder.h"

#include <algorithm>

#include "host/wire/LabelText.h"
#include "host/wire/Pad.h"
#include "platform/medmblib.h"

namespace medmb {

using wire::ByteSpan;
using wire::LabelOf;

namespace {

// In frames of 24 ms.
constexpr std::uint64_t kQuietFrames = 21;     // half a second: configuration repeats at least ten times a second
constexpr std::uint64_t kStaleFrames = 417;    // ten seconds
constexpr std::uint64_t kReconfirmFrames = 42; // one second after a reconfiguration
constexpr std::size_t kMaxServices = 256;      // far above what a FIC can repeat in time
constexpr std::size_t kMaxLabels = 512;
constexpr std::size_t kMaxApplications = 16; // of a component

} // namespace

std::string LabelBytes::Utf8() const {
    return wire::DecodeLabel(bytes, charset);
}

std::string LabelBytes::CodePage949() const {
    return wire::LabelToCodePage949(bytes, charset);
}

const Component* Service::Primary() const {
    for (const Component& component : components)
        if (component.entry.primary)
            return &component;
    return components.empty() ? nullptr : &components.front();
}

int Service::LibraryType() const {
    const Component* primary = Primary();
    if (primary == nullptr)
        return 0xFFFF;
    if (primary->entry.transport == wire::Transport::StreamData && primary->dataType == wire::kDataTypeTransport)
        return DMB_SERVICE_TYPE_DMB_VIDEO;
    const int type = static_cast<int>(primary->entry.transport) * 256 + primary->dataType;
    // The one other number that would read as television.
    return type == DMB_SERVICE_TYPE_DMB_VIDEO ? 0x400 + type : type;
}

bool Service::Scrambled() const {
    const Component* primary = Primary();
    return accessId != 0 || (primary != nullptr && primary->entry.conditionalAccess);
}

int Service::SlideshowType() const {
    for (const wire::UserApplication& application : applications)
        if (application.type == wire::kUserApplicationSlideshow && application.XPadType() >= wire::kXPadMotStart)
            return application.XPadType();
    return wire::kXPadMotStart;
}

void FicDecoder::News() {
    lastNews = frames;
    ++changes;
}

void FicDecoder::PushFic(ByteSpan fic) {
    bool anyGood = false;
    for (std::size_t at = 0; at + wire::kFibBytes <= fic.size(); at += wire::kFibBytes) {
        const ByteSpan fib = fic.subspan(at, wire::kFibBytes);
        ++fibs;
        if (!wire::FibCrcOk(fib)) {
            ++fibErrors;
            continue;
        }
        anyGood = true;
        wire::ForEachFig(fib, [this](const wire::Fig& fig) {
            if (fig.type == 0) {
                const auto fig0 = wire::ParseFig0(fig.data);
                if (fig0 && !fig0->header.nextConfiguration && !fig0->header.otherEnsemble)
                    PushFig0(*fig0);
            } else if (fig.type == 1) {
                if (const auto label = wire::ParseFig1(fig.data))
                    PushLabel(*label);
            } else if (fig.type == 2) {
                if (const auto segment = wire::ParseFig2(fig.data))
                    PushExtendedLabel(*segment);
            }
        });
    }
    if (anyGood) {
        ++frames;
        ForgetStale();
    }
}

void FicDecoder::PushFig0(const wire::Fig0& fig) {
    const ByteSpan body = fig.body;
    const bool longIds = fig.header.longIds;
    switch (fig.header.extension) {
    case 0:
        if (const auto info = wire::ParseFig0_0(body))
            PushEnsemble(*info);
        break;
    case 1:
        wire::ForEachFig0_1(body, [this](const wire::SubChannelEntry& entry) {
            KnownSubChannel& known = subChannels[entry.subChannelId];
            if (known.lastSeen == 0 || known.entry != entry)
                News();
            known = {entry, frames + 1};
        });
        break;
    case 2:
        PushServices(body, longIds);
        break;
    case 3:
        wire::ForEachFig0_3(body, [this](const wire::PacketComponentEntry& entry) {
            if (packetComponents.insert_or_assign(entry.componentId, entry).second)
                News();
        });
        break;
    case 7:
        if (const auto info = wire::ParseFig0_7(body)) {
            if (configurationCount && *configurationCount != info->count)
                reconfiguredAt = frames + 1;
            configurationCount = info->count;
            announcedServices = info->services;
        }
        break;
    case 9:
        country = wire::ParseFig0_9(body);
        break;
    case 10:
        time = wire::ParseFig0_10(body);
        break;
    case 13:
        wire::ForEachFig0_13(body, longIds,
                             [&](const wire::UserApplicationEntry& entry) { PushApplications(entry, longIds); });
        break;
    case 17:
        wire::ForEachFig0_17(body, [this](const wire::ProgrammeType& entry) {
            if (programmeTypes.size() < kMaxServices)
                programmeTypes[entry.serviceId] = entry.code;
        });
        break;
    default:
        break;
    }
}

void FicDecoder::PushEnsemble(const wire::EnsembleInformation& info) {
    if (ensembleId && *ensembleId != info.ensembleId) {
        // Another ensemble altogether: nothing known holds any more.
        const FicDecoder before = std::move(*this);
        *this = FicDecoder();
        fibs = before.fibs;
        fibErrors = before.fibErrors;
        frames = before.frames;
        changes = before.changes;
        News();
    }
    ensembleId = info.ensembleId;
    if (changeFlags != 0 && info.changeFlags == 0)
        reconfiguredAt = frames + 1;
    changeFlags = info.changeFlags;
}

void FicDecoder::PushServices(ByteSpan body, bool longIds) {
    std::optional<ServiceKey> previous;
    wire::ForEachFig0_2(body, longIds, [&](const wire::ServiceEntry& entry) {
        const ServiceKey key{longIds, entry.serviceId};
        auto found = services.find(key);
        if (found == services.end()) {
            if (services.size() >= kMaxServices)
                return;
            found = services.emplace(key, KnownService{}).first;
            firstSeen.push_back(key);
            News();
        } else if (found->second.entry != entry) {
            News();
        }
        found->second = {entry, frames + 1};
        if (previous)
            neighbours.insert({*previous, key});
        previous = key;
    });
}

// A component's applications may be told one group each, so they add up.
void FicDecoder::PushApplications(const wire::UserApplicationEntry& entry, bool longIds) {
    if (applications.size() >= kMaxServices)
        return;
    auto& known = applications[{{longIds, entry.serviceId}, entry.componentIdInService}];
    for (const wire::UserApplication& application : entry.applications) {
        const auto place = std::find_if(known.begin(), known.end(),
                                        [&](const wire::UserApplication& one) { return one.type == application.type; });
        if (place != known.end() && *place == application)
            continue;
        if (place != known.end())
            *place = application;
        else if (known.size() < kMaxApplications)
            known.push_back(application);
        else
            continue;
        ++changes;
    }
}

void FicDecoder::PushLabel(const wire::Label& label) {
    // Component labels name parts of a service; nobody asks for them.
    if (label.target.of == LabelOf::Component || labels.size() >= kMaxLabels)
        return;
    LabelBytes text{label.charset, wire::ByteVector(label.text.begin(), label.text.end())};
    LabelBytes& known = labels[{label.target.of, label.target.id}];
    if (known == text)
        return;
    known = std::move(text);
    ++changes;
}

void FicDecoder::PushExtendedLabel(const wire::ExtendedLabelSegment& segment) {
    if (segment.target.of == LabelOf::Component || extendedLabels.size() >= kMaxLabels)
        return;
    ExtendedLabel& label = extendedLabels[{segment.target.of, segment.target.id}];
    if (label.toggle != segment.toggle)
        label = {};
    label.toggle = segment.toggle;
    if (segment.segment == 0) {
        label.ucs2 = segment.ucs2;
        label.segmentCount = segment.segmentCount;
    }
    auto& place = label.segments[static_cast<std::size_t>(segment.segment)];
    if (place && std::equal(place->begin(), place->end(), segment.text.begin(), segment.text.end()))
        return;
    place = wire::ByteVector(segment.text.begin(), segment.text.end());
    ++changes;
}

void FicDecoder::ForgetStale() {
    const auto isStale = [this](std::uint64_t lastSeen) {
        if (frames - std::min(frames, lastSeen) > kStaleFrames)
            return true;
        return reconfiguredAt != 0 && lastSeen < reconfiguredAt && frames > reconfiguredAt + kReconfirmFrames;
    };
    for (auto it = services.begin(); it != services.end();) {
        if (!isStale(it->second.lastSeen)) {
            ++it;
            continue;
        }
        std::erase(firstSeen, it->first);
        it = services.erase(it);
        ++changes;
    }
    std::erase_if(subChannels, [&](const auto& item) { return isStale(item.second.lastSeen); });
}

std::optional<LabelBytes> FicDecoder::LabelFor(const LabelKey& key) const {
    if (const auto found = labels.find(key); found != labels.end() && !found->second.Utf8().empty())
        return found->second;
    return ExtendedLabelFor(key);
}

std::optional<LabelBytes> FicDecoder::ExtendedLabelFor(const LabelKey& key) const {
    const auto found = extendedLabels.find(key);
    if (found == extendedLabels.end() || found->second.segmentCount == 0)
        return std::nullopt;
    LabelBytes label;
    label.charset = found->second.ucs2 ? wire::kCharsetUcs2 : wire::kCharsetUtf8;
    for (int i = 0; i < found->second.segmentCount; ++i) {
        const auto& part = found->second.segments[static_cast<std::size_t>(i)];
        if (!part)
            return std::nullopt;
        wire::AppendBytes(label.bytes, *part);
    }
    if (label.Utf8().empty())
        return std::nullopt;
    return label;
}

Service FicDecoder::BuildService(const ServiceKey& key, const KnownService& known) const {
    Service service;
    service.longId = key.first;
    service.id = key.second;
    service.accessId = known.entry.accessId;
    const LabelKey labelKey{key.first ? LabelOf::Data : LabelOf::Programme, key.second};
    service.label = LabelFor(labelKey);
    service.extendedLabel = ExtendedLabelFor(labelKey);
    for (const wire::ComponentEntry& entry : known.entry.components) {
        Component component{entry, entry.subChannelId, entry.type};
        if (entry.transport == wire::Transport::Packet) {
            const auto packet = packetComponents.find(entry.componentId);
            component.subChannelId = packet == packetComponents.end() ? -1 : packet->second.subChannelId;
            component.dataType = packet == packetComponents.end() ? 0 : packet->second.type;
        } else if (entry.transport == wire::Transport::Fidc) {
            component.subChannelId = -1;
        }
        service.components.push_back(component);
    }
    if (const auto found = applications.find({key, 0}); found != applications.end())
        service.applications = found->second;
    if (const auto found = programmeTypes.find(key.second); found != programmeTypes.end())
        service.programmeType = found->second;
    return service;
}

// Services in the order in which FIG 0/2 repeats them. Whoever begins to listen in the middle of the turn sees a rotation
// of it; a group that holds the last of one list and the first of another would show it, so the rotation that agrees
// with most groups wins, and the one first seen among equals.
std::vector<FicDecoder::ServiceKey> FicDecoder::ServiceOrder() const {
    std::vector<ServiceKey> best = firstSeen;
    std::vector<ServiceKey> turned = firstSeen;
    const auto violations = [this](const std::vector<ServiceKey>& order) {
        std::map<ServiceKey, std::size_t> place;
        for (std::size_t i = 0; i < order.size(); ++i)
            place[order[i]] = i;
        std::size_t count = 0;
        for (const auto& [before, after] : neighbours)
            if (place.contains(before) && place.contains(after) && place[before] > place[after])
                ++count;
        return count;
    };
    std::size_t least = violations(best);
    for (std::size_t i = 1; i < turned.size() && least > 0; ++i) {
        std::rotate(turned.begin(), turned.begin() + 1, turned.end());
        if (const std::size_t count = violations(turned); count < least) {
            least = count;
            best = turned;
        }
    }
    return best;
}

Ensemble FicDecoder::Model() const {
    Ensemble ensemble;
    ensemble.id = ensembleId.value_or(0);
    ensemble.label = LabelFor({LabelOf::Ensemble, ensemble.id});
    ensemble.country = country;
    ensemble.time = time;
    for (const ServiceKey& key : ServiceOrder())
        ensemble.services.push_back(BuildService(key, services.at(key)));
    for (const auto& [id, known] : subChannels)
        ensemble.subChannels.push_back(known.entry);
    return ensemble;
}

const std::pair<const FicDecoder::ServiceKey, FicDecoder::KnownService>* FicDecoder::Find(std::uint32_t id) const {
    for (const bool longId : {true, false})
        if (const auto found = services.find({longId, id}); found != services.end())
            return &*found;
    return nullptr;
}

std::optional<Service> FicDecoder::FindService(std::uint32_t serviceId) const {
    const auto* found = Find(serviceId);
    if (found == nullptr)
        return std::nullopt;
    return BuildService(found->first, found->second);
}

std::uint64_t FicDecoder::AnnouncedAt(std::uint32_t serviceId) const {
    const auto* found = Find(serviceId);
    return found == nullptr ? 0 : found->second.lastSeen;
}

bool FicDecoder::Complete(const std::vector<int>& streams) const {
    if (!ensembleId || services.empty())
        return false;
    std::set<int> claimed;
    for (const auto& [key, known] : services) {
        const Service service = BuildService(key, known);
        if (!service.label)
            return false;
        for (const Component& component : service.components)
            claimed.insert(component.subChannelId);
    }
    for (const int id : streams)
        if (!claimed.contains(id))
            return false;
    if (announcedServices && static_cast<int>(services.size()) >= *announcedServices)
        return true;
    return frames >= lastNews + kQuietFrames;
}

} // namespace medmb

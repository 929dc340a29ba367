// The fast information channel decoded into a model of the ensemble.
//
// Groups come in any order, in portions, late or not at all, so everything is kept by identifier as it arrives and put
// together when asked. Only the current configuration of the own ensemble is read (C/N and OE are 0). What is announced
// anew replaces what was known, which follows renames and reconfigurations; what is announced no more is forgotten.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/wire/Fib.h"
#include "host/wire/Fig0.h"
#include "host/wire/Fig1.h"

namespace medmb {

// A label as broadcast: FIG 1, or an extended label when there is no other.
struct LabelBytes {
    int charset = 0;
    wire::ByteVector bytes;

    [[nodiscard]] std::string Utf8() const;
    [[nodiscard]] std::string CodePage949() const;
    bool operator==(const LabelBytes&) const = default;
};

struct Component {
    wire::ComponentEntry entry;
    int subChannelId = -1; // -1 while a packet component's place is not known
    int dataType = 0;      // ASCTy or DSCTy
};

struct Service {
    std::uint32_t id = 0;
    bool longId = false;
    int accessId = 0;
    std::vector<Component> components;
    std::optional<LabelBytes> label;
    std::optional<LabelBytes> extendedLabel;         // FIG 2, when there is one
    std::vector<wire::UserApplication> applications; // of the primary component
    std::optional<int> programmeType;

    // The component that gives the service its character; null without components.
    [[nodiscard]] const Component* Primary() const;
    // The tuner library's type: 8 T-DMB television, 0 layer II radio. Others carry TMId * 256 + ASCTy or DSCTy, so DAB+
    // is 63 and no data service can be taken for one of the two.
    [[nodiscard]] int LibraryType() const;
    [[nodiscard]] bool Scrambled() const;
    // X-PAD application type of the slideshow, 12 when the ensemble forgets to tell.
    [[nodiscard]] int SlideshowType() const;
};

struct Ensemble {
    std::uint16_t id = 0;
    std::optional<LabelBytes> label;
    std::optional<wire::CountryInformation> country;
    std::optional<wire::DateAndTime> time;
    std::vector<Service> services; // in the order of the ensemble
    std::vector<wire::SubChannelEntry> subChannels;
};

class FicDecoder {
public:
    // The FIBs of one ETI frame.
    void PushFic(wire::ByteSpan fic);
    void Reset() { *this = FicDecoder(); }

    [[nodiscard]] Ensemble Model() const;
    [[nodiscard]] std::optional<Service> FindService(std::uint32_t serviceId) const;

    // A number that grows whenever FIG 0/2 lists the service again; 0 when it never did.
    [[nodiscard]] std::uint64_t AnnouncedAt(std::uint32_t serviceId) const;

    // True when nothing is missing: every service has its label, every sub-channel of `streams` (ids) its service, and
    // no configuration news came for half a second, or as many services are known as FIG 0/7 tells.
    [[nodiscard]] bool Complete(const std::vector<int>& streams) const;
    [[nodiscard]] bool HasServices() const { return !services.empty(); }

    [[nodiscard]] std::uint64_t Fibs() const { return fibs; }
    [[nodiscard]] std::uint64_t FibErrors() const { return fibErrors; }
    // Counts changes of configuration, labels and applications.
    [[nodiscard]] std::uint64_t Changes() const { return changes; }

private:
    using ServiceKey = std::pair<bool, std::uint32_t>; // P/D, SId

    struct KnownService {
        wire::ServiceEntry entry;
        std::uint64_t lastSeen = 0; // in frames with a good FIB
    };
    struct KnownSubChannel {
        wire::SubChannelEntry entry;
        std::uint64_t lastSeen = 0;
    };
    struct ExtendedLabel {
        bool toggle = false;
        bool ucs2 = false;
        int segmentCount = 0;
        std::array<std::optional<wire::ByteVector>, 8> segments;
    };
    using LabelKey = std::pair<wire::LabelOf, std::uint32_t>;

    void PushFig0(const wire::Fig0& fig);
    void PushEnsemble(const wire::EnsembleInformation& info);
    void PushServices(wire::ByteSpan body, bool longIds);
    void PushApplications(const wire::UserApplicationEntry& entry, bool longIds);
    void PushLabel(const wire::Label& label);
    void PushExtendedLabel(const wire::ExtendedLabelSegment& segment);
    void ForgetStale();
    void News();
    [[nodiscard]] const std::pair<const ServiceKey, KnownService>* Find(std::uint32_t id) const;
    [[nodiscard]] std::optional<LabelBytes> LabelFor(const LabelKey& key) const;
    [[nodiscard]] std::optional<LabelBytes> ExtendedLabelFor(const LabelKey& key) const;
    [[nodiscard]] Service BuildService(const ServiceKey& key, const KnownService& known) const;
    [[nodiscard]] std::vector<ServiceKey> ServiceOrder() const;

    std::optional<std::uint16_t> ensembleId;
    std::optional<int> announcedServices; // FIG 0/7
    std::optional<int> configurationCount;
    int changeFlags = 0;
    std::optional<wire::CountryInformation> country;
    std::optional<wire::DateAndTime> time;
    std::map<ServiceKey, KnownService> services;
    std::vector<ServiceKey> firstSeen;
    std::set<std::pair<ServiceKey, ServiceKey>> neighbours; // seen one after the other in one group
    std::map<int, KnownSubChannel> subChannels;
    std::map<int, wire::PacketComponentEntry> packetComponents; // by SCId
    std::map<std::pair<ServiceKey, int>, std::vector<wire::UserApplication>> applications;
    std::map<std::uint32_t, int> programmeTypes;
    std::map<LabelKey, LabelBytes> labels;
    std::map<LabelKey, ExtendedLabel> extendedLabels;

    std::uint64_t fibs = 0;
    std::uint64_t fibErrors = 0;
    std::uint64_t frames = 0; // with at least one good FIB
    std::uint64_t lastNews = 0;
    std::uint64_t reconfiguredAt = 0;
    std::uint64_t changes = 0;
};

} // namespace medmb

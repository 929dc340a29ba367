#include "host/headend/Multiplex.h"

#include <cmath>
#include <set>
#include <string>

namespace headend {

namespace {

[[noreturn]] void Fail(const ServiceDescription& service, const std::string& reason) {
    throw DescriptionError("service " + service.label.text + ": " + reason);
}

// Size, level and option as in EN 300 401 6.2.1.
void Protect(const ServiceDescription& service, const Protection& protection, ActiveService& active) {
    wire::SubChannelEntry& entry = active.entry;
    entry.subChannelId = active.subChannel;
    entry.level = protection.level;
    if (!protection.equal) {
        for (std::size_t i = 0; i < wire::kUepProfiles.size(); ++i) {
            const wire::UepProfile& profile = wire::kUepProfiles[i];
            if (profile.bitRate == active.kbps && profile.level == protection.level) {
                entry.uepIndex = static_cast<int>(i);
                entry.size = profile.size;
                active.protectionField = 0b010000 | (protection.level - 1);
                return;
            }
        }
        Fail(service, "there is no UEP profile of " + std::to_string(active.kbps) + " kbit/s and level " +
                          std::to_string(protection.level));
    }
    const bool setA = protection.set == 'A';
    const int step = setA ? 8 : 32;
    if (active.kbps <= 0 || active.kbps % step != 0)
        Fail(service, "the bit rate must be a multiple of " + std::to_string(step) + " kbit/s with this protection");
    constexpr int kUnitsA[] = {12, 8, 6, 4};
    constexpr int kUnitsB[] = {27, 21, 18, 15};
    entry.longForm = true;
    entry.option = setA ? 0 : 1;
    entry.size = active.kbps / step * (setA ? kUnitsA : kUnitsB)[protection.level - 1];
    active.protectionField = 0b100000 | entry.option << 2 | (protection.level - 1);
}

ActiveService At(const ServiceDescription& service, std::size_t index, int frame) {
    ActiveService active;
    active.index = index;
    active.subChannel = service.subChannel;
    active.kbps = service.kbps;
    active.label = service.label;
    Protection protection = service.protection;
    for (const ServiceChange& change : service.changes) {
        if (FrameAt(change.at) > frame)
            continue;
        if (change.subChannel >= 0)
            active.subChannel = change.subChannel;
        if (change.kbps >= 0)
            active.kbps = change.kbps;
        if (change.hasProtection)
            protection = change.protection;
        if (change.hasLabel)
            active.label = change.label;
    }
    Protect(service, protection, active);
    return active;
}

} // namespace

int FrameAt(double seconds) {
    return static_cast<int>(std::lround(std::min(seconds, 1e6) / kFrameSeconds));
}

std::vector<Configuration> MakeConfigurations(const EnsembleDescription& ensemble) {
    std::set<int> moments = {0};
    for (const ServiceDescription& service : ensemble.services) {
        moments.insert(FrameAt(service.present.from));
        moments.insert(FrameAt(service.present.to));
        for (const ServiceChange& change : service.changes)
            moments.insert(FrameAt(change.at));
    }
    std::vector<Configuration> configurations;
    for (const int frame : moments) {
        Configuration configuration{frame, {}};
        std::set<int> subChannels;
        int start = 0;
        std::size_t bytes = 0;
        for (std::size_t i = 0; i < ensemble.services.size(); ++i) {
            const ServiceDescription& service = ensemble.services[i];
            if (frame < FrameAt(service.present.from) || frame >= FrameAt(service.present.to))
                continue;
            ActiveService active = At(service, i, frame);
            if (!subChannels.insert(active.subChannel).second)
                Fail(service, "sub-channel " + std::to_string(active.subChannel) + " is taken already");
            active.entry.startAddress = start;
            start += active.entry.size;
            bytes += active.BytesPerFrame();
            if (start > kCapacityUnits)
                Fail(service, "the ensemble is full: " + std::to_string(start) + " of " +
                                  std::to_string(kCapacityUnits) + " capacity units");
            configuration.services.push_back(std::move(active));
        }
        if (8 + 4 * configuration.services.size() + 4 + 96 + bytes + 8 > wire::kEtiFrameBytes)
            throw DescriptionError("the sub-channels are more than an ETI frame holds");
        configurations.push_back(std::move(configuration));
    }
    return configurations;
}

} // namespace headend

// For tests: a television service made by the transmitter, and ways to spoil it.
#pragma once

#include "host/headend/TsMux.h"

#include <cstdint>
#include <random>
#include <vector>

namespace filters_test {

using Bytes = std::vector<std::uint8_t>;

struct ServiceWish {
    double seconds = 4;
    int width = 160;
    int height = 120;
    int framesPerSecond = 15;
    int kbps = 320; // of the sub-channel
    headend::TsMuxSettings mux{};
    // The sound's format from this second on.
    double changeAt = 0;
    int changedRate = 24000;
    int changedChannels = 1;
    bool withPictures = true;
};

struct Service {
    Bytes packets;
    int pictures = 0; // that were sent
    int soundUnits = 0;
    double packetsPerSecond = 0;
    [[nodiscard]] std::size_t Count() const { return packets.size() / 188; }
};

[[nodiscard]] Service MakeService(const ServiceWish& wish);

// Packets of a share are missing, the same ones for the same seed.
[[nodiscard]] Bytes LosePackets(const Bytes& packets, double share, unsigned seed, double fromShare = 0,
                                double toShare = 1);

} // namespace filters_test

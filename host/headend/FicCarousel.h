// The fast information channel: the groups of a configuration sent round and round at the repetition rates of EN 300 401
// (organisation of the multiplex every 96 ms, labels and the rest once a second), three blocks an ETI frame in mode I.
#pragma once

#include <cstdint>
#include <vector>

#include "host/headend/Multiplex.h"
#include "host/wire/Bytes.h"

namespace headend {

class FicCarousel {
public:
    FicCarousel(const EnsembleDescription& ensemble, const std::vector<Configuration>& configurations,
                std::int64_t clock);

    // The three blocks of a frame; frames are asked for in order, from 0 on.
    [[nodiscard]] wire::ByteVector Next();

private:
    struct Group {
        int type = 0;
        wire::ByteVector data{};
        int period = 0; // frames
        int due = 0;
    };

    void Rebuild();
    void AddConfiguration(const Configuration& configuration, bool next);
    void AddServices(const Configuration& configuration);
    void AddLabels(const Configuration& configuration);
    void AddLabel(const LabelDescription& label, int extension, std::uint32_t id, int period);
    void Add(int type, wire::ByteVector data, int period);
    [[nodiscard]] wire::ByteVector EnsembleGroup() const;
    [[nodiscard]] wire::ByteVector TimeGroup() const;

    const EnsembleDescription& ensemble;
    const std::vector<Configuration>& configurations;
    std::int64_t clock;
    int frame = 0;
    std::size_t current = 0;
    bool announcing = false;
    std::vector<Group> groups;
};

} // namespace headend

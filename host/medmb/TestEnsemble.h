// For tests: a small ensemble of our own making, frame by frame, with everything that a test wants to be different.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/medmb/FrameSource.h"
#include "host/wire/EtiFrame.h"
#include "host/wire/Fib.h"
#include "host/wire/Fig0.h"
#include "host/wire/Fig1.h"

namespace medmb::test {

inline wire::ByteVector Fib(const std::vector<std::pair<int, wire::ByteVector>>& figs) {
    wire::FibWriter writer;
    for (const auto& [type, data] : figs)
        if (!writer.Add(type, data))
            std::abort();
    return writer.Finish();
}

inline wire::ByteVector Fig0Of(int extension, bool longIds, const wire::ByteVector& body, bool next = false,
                               bool other = false) {
    wire::ByteVector data;
    wire::AppendFig0Header(data, {next, other, longIds, extension});
    wire::AppendBytes(data, body);
    return data;
}

inline wire::ByteVector EnsembleFig(std::uint16_t id, int changeFlags = 0) {
    wire::ByteVector body;
    wire::AppendFig0_0(body, {id, changeFlags, false, 0, 0, 0});
    return Fig0Of(0, false, body);
}

inline wire::ServiceEntry OneComponent(std::uint32_t id, wire::Transport transport, int type, int subChannel,
                                       bool scrambled = false) {
    wire::ServiceEntry service;
    service.serviceId = id;
    wire::ComponentEntry component;
    component.transport = transport;
    component.type = type;
    component.subChannelId = subChannel;
    component.primary = true;
    component.conditionalAccess = scrambled;
    service.components.push_back(component);
    return service;
}

inline wire::ServiceEntry RadioService(std::uint32_t id, int subChannel) {
    return OneComponent(id, wire::Transport::StreamAudio, wire::kAudioTypeLayerTwo, subChannel);
}

inline wire::ServiceEntry TelevisionService(std::uint32_t id, int subChannel) {
    return OneComponent(id, wire::Transport::StreamData, wire::kDataTypeTransport, subChannel);
}

inline wire::ByteVector ServicesFig(const std::vector<wire::ServiceEntry>& services, bool longIds, bool next = false,
                                    bool other = false) {
    wire::ByteVector body;
    for (const auto& service : services)
        wire::AppendFig0_2(body, service, longIds);
    return Fig0Of(2, longIds, body, next, other);
}

inline wire::ByteVector SubChannelFig(int id, int size) {
    wire::ByteVector body;
    wire::SubChannelEntry entry;
    entry.subChannelId = id;
    entry.longForm = true;
    entry.level = 3;
    entry.size = size;
    wire::AppendFig0_1(body, entry);
    return Fig0Of(1, false, body);
}

inline wire::ByteVector LabelFig(wire::LabelOf of, std::uint32_t id, const std::string& text, int charset = 0) {
    wire::Label label;
    label.charset = charset;
    label.target = {of, id, 0, of == wire::LabelOf::Data};
    label.text.fill(' ');
    std::copy_n(text.begin(), std::min(text.size(), wire::kLabelBytes), label.text.begin());
    wire::ByteVector data;
    wire::AppendFig1(data, label);
    return data;
}

// A whole ensemble; each frame carries the ensemble's identity, its services and one of the labels in turn.
struct TestEnsemble {
    std::uint16_t id = 0xE1C0;
    std::vector<wire::ServiceEntry> radio;
    std::vector<wire::ServiceEntry> data;
    std::map<std::uint32_t, std::string> labels; // by service
    // The bytes of a sub-channel in a frame.
    struct Sub {
        int id = 0;
        std::function<wire::ByteVector(int frame)> bytes;
    };
    std::vector<Sub> subs;
    int firstLabelFrame = 0; // labels are silent before it
    int firstServiceFrame = 0;
    bool damagedFibs = false;

    [[nodiscard]] wire::ByteVector Fic(int frame) const {
        std::vector<std::pair<int, wire::ByteVector>> first = {{0, EnsembleFig(id)}};
        std::vector<std::pair<int, wire::ByteVector>> second;
        if (frame >= firstServiceFrame) {
            if (!radio.empty())
                first.push_back({0, ServicesFig(radio, false)});
            if (!data.empty())
                second.push_back({0, ServicesFig(data, true)});
        }
        std::vector<std::pair<int, wire::ByteVector>> third;
        if (frame >= firstLabelFrame && !labels.empty()) {
            auto label = labels.begin();
            std::advance(label, frame % static_cast<int>(labels.size()));
            const bool isLong = label->first > 0xFFFF;
            third.push_back(
                {1, LabelFig(isLong ? wire::LabelOf::Data : wire::LabelOf::Programme, label->first, label->second)});
        }
        wire::ByteVector fic;
        for (const auto& figs : {first, second, third})
            wire::AppendBytes(fic, Fib(figs));
        if (damagedFibs)
            for (std::size_t i = 0; i < fic.size(); i += wire::kFibBytes)
                fic[i] ^= 0x40;
        return fic;
    }

    [[nodiscard]] wire::ByteVector Frame(int frame) const {
        wire::EtiFrameContent content;
        content.frameCount = frame % wire::kEtiFrameCountModulo;
        content.framePhase = frame % 8;
        content.fic = Fic(frame);
        for (const Sub& sub : subs)
            content.streams.push_back({{static_cast<std::uint8_t>(sub.id), 0, 0x22, 0}, sub.bytes(frame)});
        return wire::WriteEtiFrame(content);
    }
};

// Two services, one of each kind, with constant bytes in their sub-channels.
inline TestEnsemble TwoServices() {
    TestEnsemble ensemble;
    ensemble.radio = {RadioService(0xE201, 1)};
    ensemble.data = {TelevisionService(0xF1E00401, 2)};
    ensemble.labels = {{0xE201, "RADIO"}, {0xF1E00401, "TELEVISION"}};
    ensemble.subs = {{1, [](int) { return wire::ByteVector(384, 0); }},
                     {2, [](int) { return wire::ByteVector(1632, 0); }}};
    return ensemble;
}

// Frames from a script: each step is a frame or so many milliseconds of nothing, on a clock that moves with it.
class ScriptedSource final : public FrameSource {
public:
    struct Step {
        wire::ByteVector frame; // empty: nothing
        Millis time = wire::kEtiFrameMilliseconds;
    };
    ScriptedSource(ce::Clock& clockToMove, std::function<Step(int)> stepAt, bool isFile = false)
        : clock(clockToMove), script(std::move(stepAt)), file(isFile) {}

    ReadStatus Next(Millis limit) override {
        if (pending == 0) {
            step = script(next++);
            pending = step.time;
        }
        const Millis passes = std::min(pending, limit);
        if (!file)
            clock.Sleep(passes);
        pending -= passes;
        if (pending > 0 || step.frame.empty())
            return ReadStatus::Waiting;
        bytes = step.frame;
        frame = wire::EtiFrame::Parse(bytes);
        return frame ? ReadStatus::Data : ReadStatus::Waiting;
    }
    const wire::EtiFrame& Frame() const override { return *frame; }
    bool Restarted() const override { return false; }
    bool IsFile() const override { return file; }
    std::string Reason() const override { return {}; }
    EtiFramer::Counters Count() const override { return {}; }
    bool Measured(float& decibel) const override {
        decibel = figure.value_or(decibel);
        return figure.has_value();
    }

    int Steps() const { return next; }

    std::optional<float> figure; // the receiver's own

private:
    ce::Clock& clock;
    std::function<Step(int)> script;
    bool file;
    int next = 0;
    Millis pending = 0;
    Step step;
    wire::ByteVector bytes;
    std::optional<wire::EtiFrame> frame;
};

} // namespace medmb::test

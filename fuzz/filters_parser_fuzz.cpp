// The parser in file mode: any bytes as a recording, down to access units in one framing, and how long that recording plays. What
// comes out must keep its promises.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "host/filters/CaptureTee.h"
#include "host/filters/Demultiplexer.h"
#include "host/filters/RecordingTimes.h"

namespace {

void Require(bool holds) {
    if (!holds)
        std::abort();
}

class Checker final : public filters::DemuxListener {
public:
    void OnStreams(const filters::VideoFormat*, const filters::AudioFormat* audio) override {
        if (audio != nullptr)
            Require(audio->codec != filters::AudioCodec::kUnsupported);
    }
    void OnVideo(filters::AccessUnit unit) override {
        Require(!unit.bytes.empty());
        (void)filters::InspectAvcUnit(unit.bytes);
    }
    void OnAudio(filters::AccessUnit unit) override { Require(!unit.bytes.empty()); }
    void OnClockLost() override {}
};

// The time is positive and below the limit, for the whole file and for a long one that only begins and ends like this.
void CheckTimes(filters::ByteSpan bytes) {
    const auto inRange = [](filters::Ticks time) { return time >= 0 && time <= 13 * 3600 * filters::kTicksPerSecond; };
    const auto time = filters::PlayingTime(bytes.size(), [bytes](std::uint64_t from, std::size_t size) {
        const filters::ByteSpan part = bytes.subspan(static_cast<std::size_t>(from))
                                           .first(std::min(size, bytes.size() - static_cast<std::size_t>(from)));
        return filters::Bytes(part.begin(), part.end());
    });
    Require(!time || (*time > 0 && inRange(*time)));
    const auto times = filters::MeasureTimes(bytes, bytes.subspan(bytes.size() / 2), std::uint64_t{1} << 40);
    Require(!times || (inRange(times->duration) && times->seen >= 0 && (!times->steady || times->duration > 0)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    Checker checker;
    filters::Demultiplexer demultiplexer(checker);
    const auto push = [&](filters::ByteSpan packet) {
        demultiplexer.Push(packet);
        const auto parsed = wire::TsPacket::Parse(packet);
        if (parsed && demultiplexer.Streams() != nullptr && demultiplexer.Streams()->video)
            (void)filters::BeginsRandomAccess(*parsed, *demultiplexer.Streams()->video);
    };
    // The first byte chooses: bytes that have to be synchronised, or packets as they are, with a move in the middle.
    const filters::ByteSpan bytes(data + 1, size - 1);
    if ((data[0] & 1) != 0) {
        filters::PacketSync sync;
        const std::size_t half = bytes.size() / 2;
        sync.Push(bytes.first(half), push);
        if ((data[0] & 2) != 0) {
            sync.Reset();
            demultiplexer.Restart();
        }
        sync.Push(bytes.subspan(half), push);
        sync.Finish(push);
    } else {
        for (std::size_t at = 0; at + 188 <= bytes.size(); at += 188)
            push(bytes.subspan(at, 188));
    }
    demultiplexer.Finish();
    for (const filters::TableSection& section : demultiplexer.Tables().Sections())
        Require(filters::PacketsOfSection(section, 3).size() % 188 == 0);
    CheckTimes(bytes);
    return 0;
}

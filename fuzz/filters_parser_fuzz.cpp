// The parser in file mode: any bytes as a recording, down to access units in one framing. What comes out must keep its promises.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "host/filters/CaptureTee.h"
#include "host/filters/Demultiplexer.h"

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
    return 0;
}

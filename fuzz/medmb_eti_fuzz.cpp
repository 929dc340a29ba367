// Any bytes as an ETI source: frames, FIC, one of the two kinds of service and everything behind it.
#include <cstdint>
#include <cstdlib>

#include "host/medmb/EtiFramer.h"
#include "host/medmb/ServiceReceiver.h"

namespace {

class Sink final : public medmb::ServiceSink {
public:
    void OnPackets(wire::ByteSpan packets, bool /*discontinuity*/) override {
        for (std::size_t at = 0; at < packets.size(); at += medmb::kTransportPacketBytes)
            if (packets[at] != 0x47)
                std::abort();
    }
    void OnAudio(const medmb::RadioFrame& frame, bool /*discontinuity*/) override {
        if (!frame.damaged && frame.bytes.size() != frame.header.FrameBytes())
            std::abort();
    }
    void OnText(const medmb::DynamicLabelText& text) override {
        if (text.bytes.size() > 128)
            std::abort();
    }
    void OnObject(const medmb::MotObject& object) override {
        if (object.body.size() != object.header.bodySize)
            std::abort();
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1)
        return 0;
    // The first byte chooses the service, and how the stream is cut into portions.
    const std::size_t portion = 1 + std::size_t{data[0]} / 2 * 75;
    const std::uint32_t service = (data[0] & 1) != 0 ? 0xF1E00401 : 0xE201;
    const wire::ByteSpan stream(data + 1, size - 1);
    Sink sink;
    medmb::ServiceReceiver receiver(service, sink);
    medmb::EtiFramer framer;
    const auto drain = [&] {
        while (const auto frame = framer.Next())
            receiver.Push(*frame);
    };
    for (std::size_t at = 0; at < stream.size(); at += portion) {
        framer.Push(stream.subspan(at, std::min(portion, stream.size() - at)));
        drain();
    }
    framer.Finish();
    drain();
    receiver.Finish();
    return 0;
}

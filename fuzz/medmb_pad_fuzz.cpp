// Audio frames with any PAD: X-PAD, dynamic label, data groups, MOT. A byte before each frame tells its kind; data groups may be
// given a right check sum, so that the assembler behind them is reached.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "host/medmb/PadDecoder.h"
#include "host/wire/LabelText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    medmb::PadDecoder pad;
    medmb::MotAssembler objects;
    medmb::DynamicLabelAssembler labels;
    wire::ByteSpan rest(data, size);
    while (rest.size() > 2) {
        const int kind = rest[0];
        const std::size_t length = std::min<std::size_t>(rest[1], rest.size() - 2);
        wire::ByteVector bytes(rest.begin() + 2, rest.begin() + 2 + static_cast<std::ptrdiff_t>(length));
        rest = rest.subspan(2 + length);
        switch (kind & 3) {
        case 0:
            for (const medmb::PadEvent& event : pad.Push(bytes, (kind & 4) ? 2 : 4))
                if (const auto* text = std::get_if<medmb::DynamicLabelText>(&event))
                    (void)wire::DecodeText(wire::RemoveControlCodes(text->bytes, text->charset), text->charset);
            break;
        case 1:
            if (bytes.size() >= 2) {
                bytes[0] |= 0x40;
                wire::Append16(bytes, wire::Crc16(bytes));
                const auto group = wire::ParseMscDataGroup(bytes);
                const auto object = group ? objects.Push(*group) : std::nullopt;
                if (object && object->body.size() != object->header.bodySize)
                    std::abort();
                if (object)
                    (void)object->Name();
            }
            break;
        case 2:
            if (bytes.size() >= 2) {
                bytes.resize(std::min(bytes.size(), wire::DynamicLabelSegmentBytes(bytes[0], bytes[1]) - 2));
                wire::Append16(bytes, wire::Crc16(bytes));
                if (const auto segment = wire::ParseDynamicLabelSegment(bytes))
                    if (const auto text = labels.Push(*segment); text && text->bytes.size() > 128)
                        std::abort();
            }
            break;
        default:
            pad.Gap();
            (void)wire::DecodeLabel(bytes, kind >> 4);
            break;
        }
    }
    return 0;
}

#include "host/headend/AvcStream.h"

namespace headend {

namespace {

constexpr int kSequenceParameterSet = 7;
constexpr int kPictureParameterSet = 8;
constexpr int kDelimiter = 9;

int TypeOf(wire::ByteSpan unit) {
    return unit.empty() ? 0 : unit[0] & 0x1F;
}

} // namespace

std::vector<wire::ByteSpan> SplitByteStream(wire::ByteSpan bytes) {
    std::vector<wire::ByteSpan> units;
    std::size_t begin = 0;
    bool inside = false;
    const auto close = [&](std::size_t end) {
        while (end > begin && bytes[end - 1] == 0)
            --end;
        if (inside && end > begin)
            units.push_back(bytes.subspan(begin, end - begin));
    };
    for (std::size_t at = 0; at + 3 <= bytes.size(); ++at) {
        if (bytes[at] == 0 && bytes[at + 1] == 0 && bytes[at + 2] == 1) {
            close(at);
            begin = at + 3;
            inside = true;
            at += 2;
        }
    }
    close(bytes.size());
    return units;
}

wire::ByteVector MakeAvcConfiguration(wire::ByteSpan accessUnit) {
    wire::ByteSpan sequence;
    wire::ByteSpan picture;
    for (const wire::ByteSpan unit : SplitByteStream(accessUnit)) {
        if (TypeOf(unit) == kSequenceParameterSet && sequence.empty())
            sequence = unit;
        if (TypeOf(unit) == kPictureParameterSet && picture.empty())
            picture = unit;
    }
    if (sequence.size() < 4 || picture.empty())
        return {};
    wire::ByteVector out;
    out.reserve(16 + sequence.size() + picture.size());
    // Version 1; profile, compatibility and level as in the sequence parameter set; lengths of four bytes;
    // one set each.
    const std::uint8_t head[] = {1, sequence[1], sequence[2], sequence[3], 0xFF, 0xE1};
    wire::AppendBytes(out, head);
    wire::Append16(out, static_cast<std::uint32_t>(sequence.size()));
    wire::AppendBytes(out, sequence);
    out.push_back(1);
    wire::Append16(out, static_cast<std::uint32_t>(picture.size()));
    wire::AppendBytes(out, picture);
    return out;
}

wire::ByteVector ToLengthPrefixed(wire::ByteSpan accessUnit) {
    wire::ByteVector out;
    for (const wire::ByteSpan unit : SplitByteStream(accessUnit)) {
        const int type = TypeOf(unit);
        if (type == kSequenceParameterSet || type == kPictureParameterSet || type == kDelimiter)
            continue;
        wire::Append32(out, static_cast<std::uint32_t>(unit.size()));
        wire::AppendBytes(out, unit);
    }
    return out;
}

} // namespace headend

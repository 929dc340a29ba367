// For tests: what a radio sends beside its sound, in the parts in which it is sent.
#pragma once

#include "host/wire/DynamicLabel.h"
#include "host/wire/Mot.h"
#include "host/wire/MscDataGroup.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace medmb_test {

using wire::ByteVector;
using wire::DynamicLabelSegment;

inline ByteVector Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

// A label of up to 128 bytes as its segments.
inline std::vector<ByteVector> LabelSegments(const std::string& text, bool toggle, int charset = 15) {
    std::vector<ByteVector> segments;
    const ByteVector bytes = Bytes(text);
    for (std::size_t at = 0; at < bytes.size(); at += wire::kLabelSegmentBytes) {
        DynamicLabelSegment segment;
        segment.toggle = toggle;
        segment.first = at == 0;
        segment.last = at + wire::kLabelSegmentBytes >= bytes.size();
        segment.charset = charset;
        segment.segment = static_cast<int>(at / wire::kLabelSegmentBytes);
        segment.text = wire::ByteSpan(bytes).subspan(at, std::min(wire::kLabelSegmentBytes, bytes.size() - at));
        segments.emplace_back();
        wire::AppendDynamicLabelSegment(segments.back(), segment);
    }
    return segments;
}

// A MOT object as its data groups.
struct Sent {
    std::vector<ByteVector> header;
    std::vector<ByteVector> body;
};

inline Sent MakeObject(std::uint16_t id, const std::string& name, const ByteVector& body,
                       std::size_t segmentBytes = 100, bool compressed = false) {
    wire::MotHeader header;
    header.bodySize = body.size();
    header.contentType = wire::kMotContentImage;
    header.contentSubtype = wire::kMotImageJfif;
    header.contentName = name;
    ByteVector parameters;
    if (compressed)
        wire::AppendMotParameter(parameters, wire::kMotParameterCompressionType, ByteVector{1});
    const auto split = [&](const ByteVector& data, int type) {
        std::vector<ByteVector> groups;
        for (std::size_t at = 0; at < data.size(); at += segmentBytes) {
            ByteVector segment;
            wire::AppendMotSegment(segment,
                                   {0, wire::ByteSpan(data).subspan(at, std::min(segmentBytes, data.size() - at))});
            wire::MscDataGroup group;
            group.type = type;
            group.hasSegment = group.hasTransportId = true;
            group.segment = static_cast<int>(at / segmentBytes);
            group.lastSegment = at + segmentBytes >= data.size();
            group.transportId = id;
            group.data = segment;
            groups.emplace_back();
            wire::AppendMscDataGroup(groups.back(), group);
        }
        return groups;
    };
    return {split(wire::WriteMotHeader(header, parameters), wire::kDataGroupMotHeader),
            split(body, wire::kDataGroupMotBody)};
}

// Bytes that differ by `seed`.
inline ByteVector Body(int seed, std::size_t size) {
    ByteVector body(size);
    for (std::size_t i = 0; i < size; ++i)
        body[i] = static_cast<std::uint8_t>(seed * 31 + static_cast<int>(i) * 7);
    return body;
}

} // namespace medmb_test

#include "host/medmb/MotAssembler.h"

#include <algorithm>

#include "host/wire/LabelText.h"

namespace medmb {

using wire::ByteSpan;
using wire::ByteVector;

std::string MotObject::Name() const {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(header.contentName.data());
    return wire::DecodeText({bytes, header.contentName.size()}, header.contentNameCharset);
}

std::string RefuseSlide(const wire::MotHeader& header) {
    if (header.compressed)
        return "compressed objects are not supported";
    if (header.contentType != wire::kMotContentImage)
        return "content type " + std::to_string(header.contentType) + " is not an image";
    switch (header.contentSubtype) {
    case wire::kMotImageJfif:
        return "";
    case wire::kMotImageGif:
        return "a GIF picture, only JPEG is shown";
    case wire::kMotImageBmp:
        return "a BMP picture, only JPEG is shown";
    case wire::kMotImagePng:
        return "a PNG picture, only JPEG is shown";
    default:
        return "image subtype " + std::to_string(header.contentSubtype) + " is not JPEG";
    }
}

bool MotAssembler::Parts::Add(const wire::MscDataGroup& group, ByteSpan data) {
    if (group.lastSegment && count != 0 && count != group.segment + 1)
        return false;
    if (count != 0 && group.segment >= count)
        return false;
    if (group.lastSegment && !segments.empty() && segments.rbegin()->first > group.segment)
        return false;
    const auto [place, isNew] = segments.try_emplace(group.segment, data.begin(), data.end());
    if (!isNew && !std::equal(place->second.begin(), place->second.end(), data.begin(), data.end()))
        return false;
    if (isNew)
        bytes += data.size();
    if (group.lastSegment)
        count = group.segment + 1;
    return true;
}

ByteVector MotAssembler::Parts::Join() const {
    ByteVector whole;
    whole.reserve(bytes);
    for (const auto& [index, data] : segments)
        wire::AppendBytes(whole, data);
    return whole;
}

MotAssembler::Object& MotAssembler::Find(std::uint16_t transportId) {
    const auto found = std::find_if(objects.begin(), objects.end(),
                                    [&](const Object& object) { return object.transportId == transportId; });
    if (found == objects.end()) {
        objects.emplace_front();
        objects.front().transportId = transportId;
        objects.front().begunAt = finishedObjects;
    } else {
        objects.splice(objects.begin(), objects, found);
    }
    return objects.front();
}

void MotAssembler::Limit() {
    const auto total = [this] {
        std::size_t bytes = 0;
        for (const Object& object : objects)
            bytes += object.header.bytes + object.body.bytes;
        return bytes;
    };
    while (objects.size() > 1 && (objects.size() > kMaxObjects || total() > kMaxBytes))
        objects.pop_back();
    if (total() > kMaxBytes)
        objects.clear();
}

std::optional<MotObject> MotAssembler::Push(const wire::MscDataGroup& group) {
    const bool isHeader = group.type == wire::kDataGroupMotHeader;
    if ((!isHeader && group.type != wire::kDataGroupMotBody) || !group.hasSegment || !group.hasTransportId)
        return std::nullopt;
    const auto segment = wire::ParseMotSegment(group.data);
    if (!segment)
        return std::nullopt;
    Object& object = Find(group.transportId);
    if (isHeader && object.header.segments.empty() && !object.body.Complete() && object.begunAt != finishedObjects) {
        // The tail of a body that was under way when we tuned in, and its carousel has gone on to another object since: this
        // header begins a new transmission, and only its own segments are sure to be of the same version.
        object.body = {};
        object.begunAt = finishedObjects;
    }
    Parts& parts = isHeader ? object.header : object.body;
    if (!parts.Add(group, segment->data)) {
        // A new object under an old identifier: what was collected belongs to the old one.
        object.header = {};
        object.body = {};
        if (!parts.Add(group, segment->data))
            return std::nullopt;
    }
    auto finished = TryFinish(object);
    Limit();
    return finished;
}

std::optional<MotObject> MotAssembler::TryFinish(Object& object) {
    if (!object.header.Complete() || !object.body.Complete())
        return std::nullopt;
    MotObject result;
    const auto header = wire::ParseMotHeader(object.header.Join());
    if (!header) {
        object.header = {};
        return std::nullopt;
    }
    result.header = *header;
    if (header->bodySize != object.body.bytes) {
        // Header of one version, body of another; which is which is not told, so both are collected again.
        object.header = {};
        object.body = {};
        return std::nullopt;
    }
    result.body = object.body.Join();
    const std::uint16_t id = object.transportId;
    objects.pop_front();
    ++finishedObjects;
    if (lastId == id && lastBody == result.body && lastName == header->contentName)
        return std::nullopt;
    lastId = id;
    lastBody = result.body;
    lastName = header->contentName;
    return result;
}

} // namespace medmb

#include "host/medmb/MotAssembler.h"

#include <algorithm>

#include "host/wire/LabelText.h"

namespace medmb {

using wire::ByteSpan;
using wire::ByteVector;

namespace {

constexpr std::string_view kMimeJpeg = "image/jpeg";

} // namespace

std::string MotObject::Name() const {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(header.contentName.data());
    return wire::DecodeText({bytes, header.contentName.size()}, header.contentNameCharset);
}

bool IsImage(const wire::MotHeader& header) {
    return header.contentType == wire::kMotContentImage ||
           (header.contentType == wire::kMotContentGeneral && header.mimeType.starts_with("image/"));
}

std::string RefuseSlide(const wire::MotHeader& header) {
    if (header.compressed)
        return "compressed objects are not supported";
    if (IsImage(header) && header.contentType == wire::kMotContentGeneral)
        return header.mimeType == kMimeJpeg ? "" : header.mimeType + ", only JPEG is shown";
    if (!IsImage(header))
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

bool MotAssembler::Parts::Add(const wire::MscDataGroup& group, ByteSpan data, std::uint64_t now) {
    if (!segments.empty()) {
        const auto& [highest, top] = *segments.rbegin();
        if (group.lastSegment ? highest > group.segment || (top.isLast && highest != group.segment)
                              : top.isLast && group.segment >= highest)
            return false;
    }
    Segment& place = segments[group.segment];
    if (place.heardAt == 0) {
        place.data.assign(data.begin(), data.end());
        bytes += data.size();
    } else if (!std::equal(place.data.begin(), place.data.end(), data.begin(), data.end())) {
        return false;
    }
    place.isLast = group.lastSegment;
    place.heardAt = now;
    return true;
}

void MotAssembler::Parts::Forget(std::uint64_t before) {
    for (auto it = segments.begin(); it != segments.end();) {
        const bool isOld = it->second.heardAt < before;
        bytes -= isOld ? it->second.data.size() : 0;
        it = isOld ? segments.erase(it) : std::next(it);
    }
}

bool MotAssembler::Parts::Complete() const {
    return !segments.empty() && segments.rbegin()->second.isLast &&
           segments.size() == static_cast<std::size_t>(segments.rbegin()->first) + 1;
}

std::uint64_t MotAssembler::Parts::OldestHeardAt() const {
    std::uint64_t oldest = 0;
    for (const auto& [index, segment] : segments)
        oldest = oldest == 0 ? segment.heardAt : std::min(oldest, segment.heardAt);
    return oldest;
}

ByteVector MotAssembler::Parts::Join() const {
    ByteVector whole;
    whole.reserve(bytes);
    for (const auto& [index, segment] : segments)
        wire::AppendBytes(whole, segment.data);
    return whole;
}

MotAssembler::Object& MotAssembler::Find(std::uint16_t transportId) {
    const auto found = std::find_if(objects.begin(), objects.end(),
                                    [&](const Object& object) { return object.transportId == transportId; });
    if (found == objects.end()) {
        objects.emplace_front();
        objects.front().transportId = transportId;
        objects.front().begunAt = groups;
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
    ++groups;
    Object& object = Find(group.transportId);
    if (isHeader && object.header.segments.empty() && !object.body.Complete() && object.heardAt < lastFinishedBegunAt) {
        // The tail of a body that was under way when we tuned in, and its carousel has sent another object since: this
        // header begins a new transmission, and only its own segments are sure to be of the same version.
        object.body = {};
        object.begunAt = groups;
    }
    object.heardAt = groups;
    Parts& parts = isHeader ? object.header : object.body;
    if (!parts.Add(group, segment->data, groups)) {
        // A new object under an old identifier: what was collected belongs to the old one.
        ForgetOldVersion(object, isHeader);
        if (!parts.Add(group, segment->data, groups))
            return std::nullopt;
    }
    auto finished = TryFinish(object);
    Limit();
    return finished;
}

// Header and body do not belong together. A header that came later than some of the body belongs to what has come since then.
void MotAssembler::ForgetOldVersion(Object& object, bool isHeader) {
    const std::uint64_t headerAt = object.header.OldestHeardAt();
    if (!isHeader && headerAt > object.body.OldestHeardAt()) {
        object.body.Forget(headerAt);
        return;
    }
    object.header = {};
    object.body = {};
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
        ForgetOldVersion(object, false);
        return std::nullopt;
    }
    result.body = object.body.Join();
    const std::uint16_t id = object.transportId;
    lastFinishedBegunAt = object.begunAt;
    objects.pop_front();
    if (lastId == id && lastBody == result.body && lastName == header->contentName)
        return std::nullopt;
    lastId = id;
    lastBody = result.body;
    lastName = header->contentName;
    return result;
}

} // namespace medmb

#include "host/filters/AvcUnits.h"

#include <array>

namespace filters {

namespace {

// nal_unit_type, 14496-10 table 7-1.
constexpr unsigned kSlice = 1;
constexpr unsigned kIdr = 5;
constexpr unsigned kSei = 6;
constexpr unsigned kSequenceParameters = 7;
constexpr unsigned kPictureParameters = 8;
constexpr unsigned kDelimiter = 9;
constexpr std::uint8_t kRecoveryPoint = 6; // SEI payload type, D.1
constexpr std::array<std::uint8_t, 4> kStartCode = {0, 0, 0, 1};

void AppendUnit(Bytes& out, ByteSpan unit) {
    out.insert(out.end(), kStartCode.begin(), kStartCode.end());
    out.insert(out.end(), unit.begin(), unit.end());
}

// The offset of the next 00 00 01, or the size.
std::size_t FindStartCode(ByteSpan bytes, std::size_t from) {
    for (std::size_t i = from; i + 3 <= bytes.size(); ++i) {
        if (bytes[i] == 0 && bytes[i + 1] == 0 && bytes[i + 2] == 1)
            return i;
    }
    return bytes.size();
}

bool BeginsWithStartCode(ByteSpan bytes) {
    return bytes.size() >= 4 && bytes[0] == 0 && bytes[1] == 0 && (bytes[2] == 1 || (bytes[2] == 0 && bytes[3] == 1));
}

bool TakeSets(ByteSpan& rest, std::size_t count, Bytes& out) {
    for (std::size_t i = 0; i < count; ++i) {
        if (rest.size() < 2)
            return false;
        const std::size_t size = static_cast<std::size_t>(rest[0]) << 8 | rest[1];
        if (rest.size() - 2 < size)
            return false;
        AppendUnit(out, rest.subspan(2, size));
        rest = rest.subspan(2 + size);
    }
    return true;
}

// Units behind lengths of `lengthBytes`; nothing when they do not fill the bytes exactly.
std::optional<Bytes> FromLengths(ByteSpan unit, unsigned lengthBytes) {
    Bytes out;
    out.reserve(unit.size() + 16);
    while (!unit.empty()) {
        if (unit.size() < lengthBytes)
            return std::nullopt;
        std::size_t size = 0;
        for (unsigned i = 0; i < lengthBytes; ++i)
            size = size << 8 | unit[i];
        if (size == 0 || unit.size() - lengthBytes < size)
            return std::nullopt;
        AppendUnit(out, unit.subspan(lengthBytes, size));
        unit = unit.subspan(lengthBytes + size);
    }
    return out;
}

} // namespace

std::optional<AvcConfiguration> AvcConfiguration::Parse(ByteSpan record) {
    if (record.size() < 7 || record[0] != 1)
        return std::nullopt;
    AvcConfiguration configuration;
    configuration.lengthBytes = (record[4] & 3u) + 1;
    ByteSpan rest = record.subspan(6);
    if (!TakeSets(rest, record[5] & 0x1F, configuration.parameterSets) || rest.empty())
        return std::nullopt;
    const std::size_t count = rest[0];
    rest = rest.subspan(1);
    if (!TakeSets(rest, count, configuration.parameterSets))
        return std::nullopt;
    return configuration;
}

AvcUnitInfo InspectAvcUnit(ByteSpan bytes) {
    AvcUnitInfo info;
    for (std::size_t at = FindStartCode(bytes, 0); at + 3 < bytes.size(); at = FindStartCode(bytes, at + 3)) {
        const unsigned type = bytes[at + 3] & 0x1F;
        if (type >= kSlice && type <= kIdr)
            info.hasSlice = true;
        if (type == kIdr || (type == kSei && at + 4 < bytes.size() && bytes[at + 4] == kRecoveryPoint))
            info.randomAccess = true;
        if (type == kSequenceParameters || type == kPictureParameters)
            info.hasParameterSets = true;
        if (type == kSlice || type == kIdr)
            break; // nothing after the first slice decides anything
    }
    return info;
}

std::optional<Bytes> ToByteStream(ByteSpan unit, const AvcConfiguration* configuration) {
    // A length of 256 to 511 looks like a start code, so where lengths are expected they are tried first.
    std::optional<Bytes> stream;
    if (configuration != nullptr)
        stream = FromLengths(unit, configuration->lengthBytes);
    if (!stream && BeginsWithStartCode(unit))
        stream.emplace(unit.begin(), unit.end());
    if (!stream && configuration == nullptr)
        stream = FromLengths(unit, 4);
    if (!stream || configuration == nullptr || configuration->parameterSets.empty())
        return stream;
    const AvcUnitInfo info = InspectAvcUnit(*stream);
    if (info.randomAccess && !info.hasParameterSets)
        stream->insert(stream->begin(), configuration->parameterSets.begin(), configuration->parameterSets.end());
    return stream;
}

std::vector<std::size_t> AvcUnitStarts(ByteSpan bytes) {
    std::vector<std::size_t> starts = {0};
    for (std::size_t at = FindStartCode(bytes, 0); at + 3 < bytes.size(); at = FindStartCode(bytes, at + 3)) {
        if ((bytes[at + 3] & 0x1F) != kDelimiter)
            continue;
        const std::size_t start = at > 0 && bytes[at - 1] == 0 ? at - 1 : at;
        if (start > starts.back())
            starts.push_back(start);
    }
    return starts;
}

} // namespace filters

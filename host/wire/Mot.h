// Multimedia object transfer: object header and segments (EN 301 234 5.1, 6).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/wire/Bytes.h"

namespace wire {

// Content types and subtypes (TS 101 756 table 17).
inline constexpr int kMotContentGeneral = 0; // what it is stands in the MIME type
inline constexpr int kMotContentImage = 2;
inline constexpr int kMotImageGif = 0;
inline constexpr int kMotImageJfif = 1;
inline constexpr int kMotImageBmp = 2;
inline constexpr int kMotImagePng = 3;

inline constexpr int kMotParameterContentName = 0x0C;
inline constexpr int kMotParameterTriggerTime = 0x05;
inline constexpr int kMotParameterMimeType = 0x10;
inline constexpr int kMotParameterCompressionType = 0x11;

// The header core and the parameters that a slideshow needs.
struct MotHeader {
    std::size_t bodySize = 0;
    std::size_t headerSize = 0;
    int contentType = 0;
    int contentSubtype = 0;
    int contentNameCharset = 0;
    std::string contentName; // bytes as sent
    std::string mimeType;    // empty when none is told
    bool compressed = false; // a CompressionType parameter is present
};

// `bytes` is the whole header, core and extension. The lengths must agree with each other.
[[nodiscard]] inline std::optional<MotHeader> ParseMotHeader(ByteSpan bytes) {
    if (bytes.size() < 7)
        return std::nullopt;
    MotHeader header;
    header.bodySize = Get32(bytes, 0) >> 4;
    header.headerSize = ((Get32(bytes, 2) >> 7) & 0x1FFF);
    header.contentType = (bytes[5] >> 1) & 0x3F;
    header.contentSubtype = static_cast<int>(Get16(bytes, 5) & 0x1FF);
    if (header.headerSize < 7 || header.headerSize > bytes.size())
        return std::nullopt;
    std::size_t at = 7;
    while (at < header.headerSize) {
        const int lengthCode = bytes[at] >> 6;
        const int id = bytes[at] & 0x3F;
        ++at;
        std::size_t length = lengthCode == 1 ? 1 : lengthCode == 2 ? 4 : 0;
        if (lengthCode == 3) {
            if (at >= header.headerSize)
                return std::nullopt;
            length = bytes[at] & 0x7F;
            if (bytes[at] & 0x80) {
                if (at + 1 >= header.headerSize)
                    return std::nullopt;
                length = (length << 8) | bytes[at + 1];
                ++at;
            }
            ++at;
        }
        if (at + length > header.headerSize)
            return std::nullopt;
        if (id == kMotParameterContentName && length >= 1) {
            header.contentNameCharset = bytes[at] >> 4;
            header.contentName.assign(bytes.begin() + static_cast<std::ptrdiff_t>(at + 1),
                                      bytes.begin() + static_cast<std::ptrdiff_t>(at + length));
        } else if (id == kMotParameterMimeType) {
            header.mimeType.assign(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                                   bytes.begin() + static_cast<std::ptrdiff_t>(at + length));
        } else if (id == kMotParameterCompressionType) {
            header.compressed = true;
        }
        at += length;
    }
    return header;
}

// One parameter of the header extension with the shortest length code that fits.
inline void AppendMotParameter(ByteVector& out, int id, ByteSpan data) {
    if (data.empty() || data.size() == 1 || data.size() == 4) {
        const int code = data.empty() ? 0 : data.size() == 1 ? 1 : 2;
        out.push_back(static_cast<std::uint8_t>((code << 6) | id));
    } else {
        out.push_back(static_cast<std::uint8_t>(0xC0 | id));
        if (data.size() < 128)
            out.push_back(static_cast<std::uint8_t>(data.size()));
        else
            Append16(out, 0x8000u | static_cast<std::uint32_t>(data.size()));
    }
    AppendBytes(out, data);
}

// The whole header; headerSize is computed, `parameters` are those written by AppendMotParameter. The content name is added first.
[[nodiscard]] inline ByteVector WriteMotHeader(const MotHeader& header, ByteSpan parameters = {}) {
    ByteVector extension;
    if (!header.contentName.empty()) {
        ByteVector name{static_cast<std::uint8_t>(header.contentNameCharset << 4)};
        name.insert(name.end(), header.contentName.begin(), header.contentName.end());
        AppendMotParameter(extension, kMotParameterContentName, name);
    }
    AppendBytes(extension, parameters);
    const std::uint64_t headerSize = 7 + extension.size();
    const std::uint64_t core = (static_cast<std::uint64_t>(header.bodySize) << 28) | (headerSize << 15) |
                               (static_cast<std::uint64_t>(header.contentType) << 9) |
                               static_cast<std::uint64_t>(header.contentSubtype);
    ByteVector out;
    for (int shift = 48; shift >= 0; shift -= 8)
        out.push_back(static_cast<std::uint8_t>(core >> shift));
    AppendBytes(out, extension);
    return out;
}

// The field before each segment's data: repetition count (3 bits), segment size (13 bits).
struct MotSegment {
    int repetition = 0;
    ByteSpan data;
};

[[nodiscard]] inline std::optional<MotSegment> ParseMotSegment(ByteSpan bytes) {
    if (bytes.size() < 2)
        return std::nullopt;
    const std::size_t size = Get16(bytes, 0) & 0x1FFF;
    if (bytes.size() < 2 + size)
        return std::nullopt;
    return MotSegment{bytes[0] >> 5, bytes.subspan(2, size)};
}

inline void AppendMotSegment(ByteVector& out, const MotSegment& segment) {
    Append16(out, static_cast<std::uint32_t>((segment.repetition << 13) | static_cast<int>(segment.data.size())));
    AppendBytes(out, segment.data);
}

} // namespace wire

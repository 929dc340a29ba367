// The descriptors of streams of ISO/IEC 14496-1 as they travel in a T-DMB transport stream (ETSI TS 102 428).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/wire/Bytes.h"

namespace wire {

// Class tags, 14496-1 7.2.2.1.
inline constexpr std::uint8_t kTagObjectDescriptor = 0x01;
inline constexpr std::uint8_t kTagInitialObjectDescriptor = 0x02;
inline constexpr std::uint8_t kTagEsDescriptor = 0x03;
inline constexpr std::uint8_t kTagDecoderConfig = 0x04;
inline constexpr std::uint8_t kTagDecoderSpecificInfo = 0x05;
inline constexpr std::uint8_t kTagSlConfig = 0x06;
// Command tag, 7.2.5.5.
inline constexpr std::uint8_t kTagObjectDescriptorUpdate = 0x01;
// Descriptors of the programme map, ISO/IEC 13818-1 2.6.40 and 2.6.46.
inline constexpr std::uint8_t kPsiTagIod = 0x1D;
inline constexpr std::uint8_t kPsiTagSl = 0x1E;

// objectTypeIndication and streamType, 7.2.6.6.2.
inline constexpr std::uint8_t kObjectTypeSystems1 = 0x01;
inline constexpr std::uint8_t kObjectTypeSystems2 = 0x02;
inline constexpr std::uint8_t kObjectTypeH264 = 0x21;
inline constexpr std::uint8_t kObjectTypeMpeg4Audio = 0x40;
inline constexpr std::uint8_t kStreamObjectDescriptor = 0x01;
inline constexpr std::uint8_t kStreamScene = 0x03;
inline constexpr std::uint8_t kStreamVisual = 0x04;
inline constexpr std::uint8_t kStreamAudio = 0x05;

// 8.3.3, an expandable class: tag, size in groups of seven bits, body.
struct Mp4Descriptor {
    std::uint8_t tag = 0;
    std::span<const std::uint8_t> body{};

    // Takes one descriptor off the front of `rest`. Nothing (and `rest` untouched) when it does not fit.
    [[nodiscard]] static std::optional<Mp4Descriptor> Take(std::span<const std::uint8_t>& rest) {
        std::size_t at = 1;
        std::size_t size = 0;
        for (;; ++at) {
            if (at >= rest.size() || at > 4)
                return std::nullopt;
            size = size << 7 | (rest[at] & 0x7F);
            if ((rest[at] & 0x80) == 0)
                break;
        }
        ++at;
        if (rest.size() - at < size)
            return std::nullopt;
        Mp4Descriptor descriptor{rest[0], rest.subspan(at, size)};
        rest = rest.subspan(at + size);
        return descriptor;
    }

    static void Put(std::vector<std::uint8_t>& out, std::uint8_t tag, std::span<const std::uint8_t> body) {
        out.push_back(tag);
        for (int shift = 21; shift > 0; shift -= 7) {
            if (body.size() >> shift != 0)
                out.push_back(static_cast<std::uint8_t>(0x80 | (body.size() >> shift & 0x7F)));
        }
        out.push_back(static_cast<std::uint8_t>(body.size() & 0x7F));
        AppendBytes(out, body);
    }
};

// SLConfigDescriptor, 7.3.2.3: how long the fields of a stream's SL packet headers are.
struct SlConfig {
    std::uint8_t predefined = 0; // 0 = all fields follow; 1 = null header, 2 = MP4 file
    bool useAccessUnitStart = false;
    bool useAccessUnitEnd = false;
    bool useRandomAccessPoint = false;
    bool hasRandomAccessUnitsOnly = false;
    bool usePadding = false;
    bool useTimeStamps = false;
    bool useIdle = false;
    std::uint32_t timeStampResolution = 0; // ticks a second
    std::uint32_t ocrResolution = 0;
    std::uint8_t timeStampLength = 0; // bits, 0..64
    std::uint8_t ocrLength = 0;       // bits, 0..64
    std::uint8_t accessUnitLengthLength = 0;
    std::uint8_t instantBitrateLength = 0;
    std::uint8_t degradationPriorityLength = 0;
    std::uint8_t accessUnitSequenceLength = 0;
    std::uint8_t packetSequenceLength = 0;
    // With durationFlag.
    bool hasDuration = false;
    std::uint32_t timeScale = 0;
    std::uint16_t accessUnitDuration = 0;
    std::uint16_t compositionUnitDuration = 0;

    bool operator==(const SlConfig&) const = default;

    // Nothing for a body that is too short or field lengths that no SL packet can have.
    [[nodiscard]] static std::optional<SlConfig> Parse(std::span<const std::uint8_t> body) {
        if (body.empty())
            return std::nullopt;
        SlConfig config;
        config.predefined = body[0];
        if (config.predefined != 0)
            return config;
        if (body.size() < 16)
            return std::nullopt;
        const std::uint8_t flags = body[1];
        config.useAccessUnitStart = (flags & 0x80) != 0;
        config.useAccessUnitEnd = (flags & 0x40) != 0;
        config.useRandomAccessPoint = (flags & 0x20) != 0;
        config.hasRandomAccessUnitsOnly = (flags & 0x10) != 0;
        config.usePadding = (flags & 0x08) != 0;
        config.useTimeStamps = (flags & 0x04) != 0;
        config.useIdle = (flags & 0x02) != 0;
        config.hasDuration = (flags & 0x01) != 0;
        config.timeStampResolution = Get32(body, 2);
        config.ocrResolution = Get32(body, 6);
        config.timeStampLength = body[10];
        config.ocrLength = body[11];
        config.accessUnitLengthLength = body[12];
        config.instantBitrateLength = body[13];
        const unsigned lengths = Get16(body, 14);
        config.degradationPriorityLength = lengths >> 12;
        config.accessUnitSequenceLength = lengths >> 7 & 0x1F;
        config.packetSequenceLength = lengths >> 2 & 0x1F;
        if (config.timeStampLength > 64 || config.ocrLength > 64 || config.accessUnitLengthLength > 32 ||
            config.instantBitrateLength > 32 || config.accessUnitSequenceLength > 16 ||
            config.packetSequenceLength > 16)
            return std::nullopt;
        if (config.hasDuration) {
            if (body.size() < 24)
                return std::nullopt;
            config.timeScale = Get32(body, 16);
            config.accessUnitDuration = static_cast<std::uint16_t>(Get16(body, 20));
            config.compositionUnitDuration = static_cast<std::uint16_t>(Get16(body, 22));
        }
        return config;
    }

    // The body. Start and end time stamps of streams without time stamps are not written.
    [[nodiscard]] std::vector<std::uint8_t> Write() const {
        std::vector<std::uint8_t> out = {predefined};
        if (predefined != 0)
            return out;
        out.push_back(static_cast<std::uint8_t>(useAccessUnitStart << 7 | useAccessUnitEnd << 6 |
                                                useRandomAccessPoint << 5 | hasRandomAccessUnitsOnly << 4 |
                                                usePadding << 3 | useTimeStamps << 2 | useIdle << 1 |
                                                static_cast<int>(hasDuration)));
        Append32(out, timeStampResolution);
        Append32(out, ocrResolution);
        out.insert(out.end(), {timeStampLength, ocrLength, accessUnitLengthLength, instantBitrateLength});
        Append16(out, static_cast<unsigned>(degradationPriorityLength) << 12 |
                          static_cast<unsigned>(accessUnitSequenceLength) << 7 |
                          static_cast<unsigned>(packetSequenceLength) << 2 | 3);
        if (hasDuration) {
            Append32(out, timeScale);
            Append16(out, accessUnitDuration);
            Append16(out, compositionUnitDuration);
        }
        return out;
    }
};

// DecoderConfigDescriptor, 7.2.6.6, with the decoder specific information inside it.
struct DecoderConfig {
    std::uint8_t objectType = 0;
    std::uint8_t streamType = 0; // 6 bits
    bool upStream = false;
    std::uint32_t bufferSize = 0; // bytes, 24 bits
    std::uint32_t maxBitrate = 0; // bit/s
    std::uint32_t averageBitrate = 0;
    std::vector<std::uint8_t> specificInfo{}; // avcC, AudioSpecificConfig; empty = none

    bool operator==(const DecoderConfig&) const = default;

    [[nodiscard]] static std::optional<DecoderConfig> Parse(std::span<const std::uint8_t> body) {
        if (body.size() < 13)
            return std::nullopt;
        DecoderConfig config;
        config.objectType = body[0];
        config.streamType = body[1] >> 2;
        config.upStream = (body[1] & 2) != 0;
        config.bufferSize = Get32(body, 1) & 0xFF'FFFF;
        config.maxBitrate = Get32(body, 5);
        config.averageBitrate = Get32(body, 9);
        std::span<const std::uint8_t> rest = body.subspan(13);
        while (!rest.empty()) {
            const auto inner = Mp4Descriptor::Take(rest);
            if (!inner)
                return std::nullopt;
            if (inner->tag == kTagDecoderSpecificInfo)
                config.specificInfo.assign(inner->body.begin(), inner->body.end());
        }
        return config;
    }

    [[nodiscard]] std::vector<std::uint8_t> Write() const {
        std::vector<std::uint8_t> out = {objectType,
                                         static_cast<std::uint8_t>(streamType << 2 | (upStream ? 2 : 0) | 1)};
        out.push_back(static_cast<std::uint8_t>(bufferSize >> 16 & 0xFF));
        Append16(out, bufferSize & 0xFFFF);
        Append32(out, maxBitrate);
        Append32(out, averageBitrate);
        if (!specificInfo.empty())
            Mp4Descriptor::Put(out, kTagDecoderSpecificInfo, specificInfo);
        return out;
    }
};

// ES_Descriptor, 7.2.6.5.
struct EsDescriptor {
    std::uint16_t esId = 0;
    std::uint8_t priority = 0; // 5 bits
    std::optional<std::uint16_t> dependsOn{};
    std::string url{};
    std::optional<std::uint16_t> clockEsId{}; // OCR_ES_Id: the stream whose clock references count for this one
    DecoderConfig decoder{};
    SlConfig sl{};

    bool operator==(const EsDescriptor&) const = default;

    // Nothing without a decoder configuration and an SL configuration: such a stream cannot be read.
    [[nodiscard]] static std::optional<EsDescriptor> Parse(std::span<const std::uint8_t> body) {
        if (body.size() < 3)
            return std::nullopt;
        EsDescriptor es;
        es.esId = static_cast<std::uint16_t>(Get16(body, 0));
        const std::uint8_t flags = body[2];
        es.priority = flags & 0x1F;
        std::span<const std::uint8_t> rest = body.subspan(3);
        if ((flags & 0x80) != 0 && !Take16(rest, es.dependsOn))
            return std::nullopt;
        if ((flags & 0x40) != 0) {
            if (rest.empty() || rest.size() - 1 < rest[0])
                return std::nullopt;
            es.url.assign(rest.begin() + 1, rest.begin() + 1 + rest[0]);
            rest = rest.subspan(1 + es.url.size());
        }
        if ((flags & 0x20) != 0 && !Take16(rest, es.clockEsId))
            return std::nullopt;

        std::optional<DecoderConfig> decoder;
        std::optional<SlConfig> sl;
        while (!rest.empty()) {
            const auto inner = Mp4Descriptor::Take(rest);
            if (!inner)
                return std::nullopt;
            if (inner->tag == kTagDecoderConfig)
                decoder = DecoderConfig::Parse(inner->body);
            else if (inner->tag == kTagSlConfig)
                sl = SlConfig::Parse(inner->body);
        }
        if (!decoder || !sl)
            return std::nullopt;
        es.decoder = std::move(*decoder);
        es.sl = *sl;
        return es;
    }

    [[nodiscard]] std::vector<std::uint8_t> Write() const {
        std::vector<std::uint8_t> out;
        out.reserve(64);
        Append16(out, esId);
        out.push_back(static_cast<std::uint8_t>((dependsOn ? 0x80 : 0) | (url.empty() ? 0 : 0x40) |
                                                (clockEsId ? 0x20 : 0) | (priority & 0x1F)));
        if (dependsOn)
            Append16(out, *dependsOn);
        if (!url.empty()) {
            out.push_back(static_cast<std::uint8_t>(url.size()));
            out.insert(out.end(), url.begin(), url.end());
        }
        if (clockEsId)
            Append16(out, *clockEsId);
        Mp4Descriptor::Put(out, kTagDecoderConfig, decoder.Write());
        Mp4Descriptor::Put(out, kTagSlConfig, sl.Write());
        return out;
    }

private:
    [[nodiscard]] static bool Take16(std::span<const std::uint8_t>& rest, std::optional<std::uint16_t>& value) {
        if (rest.size() < 2)
            return false;
        value = static_cast<std::uint16_t>(Get16(rest, 0));
        rest = rest.subspan(2);
        return true;
    }
};

} // namespace wire

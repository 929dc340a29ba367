#include "host/codec/BlockHeader.h"

#include <algorithm>

namespace codec {

namespace {

// Widths of tns_data for a long window and for each of eight short ones.
struct TnsWidths {
    unsigned filterCount;
    unsigned length;
    unsigned order;
    unsigned windows;
};
constexpr TnsWidths kTnsLong{2, 6, 5, 1};
constexpr TnsWidths kTnsShort{1, 4, 3, 8};

const TnsWidths& Widths(const BlockHeader& header) {
    return header.IsShort() ? kTnsShort : kTnsLong;
}

std::int8_t SignExtend(std::uint32_t value, unsigned bits) {
    const std::uint32_t sign = 1U << (bits - 1);
    return static_cast<std::int8_t>(static_cast<int>(value ^ sign) - static_cast<int>(sign));
}

unsigned CoefficientBits(const TnsWindow& window, const TnsFilter& filter) {
    return 3U + (window.fineResolution ? 1U : 0U) - (filter.compressed ? 1U : 0U);
}

void ReadTns(wire::BitReader& reader, const TnsWidths& widths, ChannelHeader& channel) {
    for (unsigned w = 0; w < widths.windows; ++w) {
        TnsWindow& window = channel.tns[w];
        window.filterCount = static_cast<std::uint8_t>(reader.Read(widths.filterCount));
        if (window.filterCount > 0)
            window.fineResolution = reader.ReadFlag();
        for (unsigned f = 0; f < window.filterCount; ++f) {
            TnsFilter& filter = window.filters[f];
            filter.length = static_cast<std::uint8_t>(reader.Read(widths.length));
            filter.order = static_cast<std::uint8_t>(reader.Read(widths.order));
            if (filter.order == 0)
                continue;
            filter.downwards = reader.ReadFlag();
            filter.compressed = reader.ReadFlag();
            const unsigned bits = CoefficientBits(window, filter);
            for (unsigned i = 0; i < filter.order; ++i)
                filter.coefficients[i] = SignExtend(reader.Read(bits), bits);
        }
    }
}

void WriteTns(wire::BitWriter& writer, const TnsWidths& widths, const ChannelHeader& channel) {
    for (unsigned w = 0; w < widths.windows; ++w) {
        const TnsWindow& window = channel.tns[w];
        writer.Write(window.filterCount, widths.filterCount);
        if (window.filterCount > 0)
            writer.WriteFlag(window.fineResolution);
        for (unsigned f = 0; f < window.filterCount; ++f) {
            const TnsFilter& filter = window.filters[f];
            writer.Write(filter.length, widths.length);
            writer.Write(filter.order, widths.order);
            if (filter.order == 0)
                continue;
            writer.WriteFlag(filter.downwards);
            writer.WriteFlag(filter.compressed);
            for (unsigned i = 0; i < filter.order; ++i)
                writer.Write(static_cast<std::uint32_t>(filter.coefficients[i]), CoefficientBits(window, filter));
        }
    }
}

} // namespace

BsacStatus ReadBlockHeader(std::span<const std::uint8_t> bytes, const RateTables& rate, unsigned channels,
                           BlockHeader& header) {
    const auto byte = [](std::uint32_t value) { return static_cast<std::uint8_t>(value); };
    wire::BitReader reader(bytes);
    header = BlockHeader{};
    header.channels = channels;
    header.frameLength = reader.Read(11);
    reader.Skip(4); // header_length: the header is self-describing
    header.segmented = reader.ReadFlag();
    header.topLayer = byte(reader.Read(6));
    header.baseSnfThreshold = byte(reader.Read(2));
    for (unsigned c = 0; c < channels; ++c)
        header.channel[c].maxScalefactor = byte(reader.Read(8));
    header.baseBand = byte(reader.Read(5));
    for (unsigned c = 0; c < channels; ++c) {
        ChannelHeader& channel = header.channel[c];
        channel.cbandSiType = byte(reader.Read(5));
        channel.baseScalefactorModel = byte(reader.Read(3));
        channel.enhScalefactorModel = byte(reader.Read(3));
        channel.maxSfbSiLength = byte(reader.Read(4));
    }
    reader.Skip(1); // reserved
    header.windowSequence = static_cast<WindowSequence>(reader.Read(2));
    header.windowShape = static_cast<WindowShape>(reader.Read(1));
    if (header.IsShort()) {
        header.maxSfb = byte(reader.Read(4));
        header.grouping = byte(reader.Read(7));
    } else {
        header.maxSfb = byte(reader.Read(6));
    }
    header.noisePresent = reader.ReadFlag();
    if (header.noisePresent)
        header.noiseStartSfb = byte(reader.Read(6));
    if (channels == 2)
        header.stereoMask = static_cast<StereoMask>(reader.Read(2));
    for (unsigned c = 0; c < channels; ++c) {
        ChannelHeader& channel = header.channel[c];
        channel.tnsPresent = reader.ReadFlag();
        if (channel.tnsPresent)
            ReadTns(reader, Widths(header), channel);
        if (reader.ReadFlag())
            return BsacStatus::kLongTermPredictor;
    }
    reader.AlignToByte();
    header.bits = reader.Position();
    if (reader.Overrun() || header.bits > header.FrameBits())
        return BsacStatus::kBadHeader;
    if (header.maxSfb >= BandEdges(rate, header).size())
        return BsacStatus::kTooManyBands;
    return BsacStatus::kOk;
}

namespace {

void WriteFields(const BlockHeader& header, unsigned headerLength, wire::BitWriter& writer) {
    writer.Write(header.frameLength, 11);
    writer.Write(headerLength, 4);
    writer.WriteFlag(header.segmented);
    writer.Write(header.topLayer, 6);
    writer.Write(header.baseSnfThreshold, 2);
    for (unsigned c = 0; c < header.channels; ++c)
        writer.Write(header.channel[c].maxScalefactor, 8);
    writer.Write(header.baseBand, 5);
    for (unsigned c = 0; c < header.channels; ++c) {
        const ChannelHeader& channel = header.channel[c];
        writer.Write(channel.cbandSiType, 5);
        writer.Write(channel.baseScalefactorModel, 3);
        writer.Write(channel.enhScalefactorModel, 3);
        writer.Write(channel.maxSfbSiLength, 4);
    }
    writer.WriteFlag(false); // reserved
    writer.Write(static_cast<std::uint32_t>(header.windowSequence), 2);
    writer.Write(static_cast<std::uint32_t>(header.windowShape), 1);
    writer.Write(header.maxSfb, header.IsShort() ? 4 : 6);
    if (header.IsShort())
        writer.Write(header.grouping, 7);
    writer.WriteFlag(header.noisePresent);
    if (header.noisePresent)
        writer.Write(header.noiseStartSfb, 6);
    if (header.channels == 2)
        writer.Write(static_cast<std::uint32_t>(header.stereoMask), 2);
    for (unsigned c = 0; c < header.channels; ++c) {
        writer.WriteFlag(header.channel[c].tnsPresent);
        if (header.channel[c].tnsPresent)
            WriteTns(writer, Widths(header), header.channel[c]);
        writer.WriteFlag(false); // ltp_data_present
    }
    writer.AlignToByte();
}

} // namespace

void WriteBlockHeader(BlockHeader& header, wire::BitWriter& writer) {
    // header_length counts the header's bytes from 7 on, so its size must be known before it is written.
    wire::BitWriter measure;
    WriteFields(header, 0, measure);
    header.bits = measure.BitCount();
    const int length = std::clamp(static_cast<int>(header.bits / 8) - 7, 0, 15);
    WriteFields(header, static_cast<unsigned>(length), writer);
}

} // namespace codec

// The header of a sync layer packet, ISO/IEC 14496-1 7.3.2.4. Its fields are as long as the stream's SlConfig
// says.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/wire/BitReader.h"
#include "host/wire/BitWriter.h"
#include "host/wire/Mpeg4Descriptors.h"

namespace wire {

struct SlHeader {
    // 7.3.2.4: without the flags in the configuration every packet counts as start and end of an access unit.
    bool accessUnitStart = true;
    bool accessUnitEnd = true;
    bool idle = false;
    bool paddingOnly = false;     // nothing but padding follows
    std::uint8_t paddingBits = 0; // 0..7 at the payload's end
    std::uint32_t packetSequence = 0;
    std::optional<std::uint32_t> degradationPriority{};
    std::optional<std::uint64_t> clockReference{}; // in ticks of ocrResolution
    bool randomAccess = false;
    std::uint32_t accessUnitSequence = 0;
    std::optional<std::uint64_t> decodingTime{}; // in ticks of timeStampResolution
    std::optional<std::uint64_t> compositionTime{};
    std::uint32_t accessUnitLength = 0;
    std::optional<std::uint32_t> instantBitrate{};
    std::size_t size = 0; // bytes; where the payload begins. Set by Parse.

    // Nothing when the header is longer than the bytes. A predefined configuration other than 0 has no header
    // at all.
    [[nodiscard]] static std::optional<SlHeader> Parse(std::span<const std::uint8_t> bytes, const SlConfig& config) {
        SlHeader header;
        if (config.predefined != 0)
            return header;
        BitReader bits(bytes);
        if (config.useAccessUnitStart)
            header.accessUnitStart = bits.ReadFlag();
        if (config.useAccessUnitEnd)
            header.accessUnitEnd = bits.ReadFlag();
        const bool hasClock = config.ocrLength > 0 && bits.ReadFlag();
        if (config.useIdle)
            header.idle = bits.ReadFlag();
        if (config.usePadding && bits.ReadFlag()) {
            header.paddingBits = static_cast<std::uint8_t>(bits.Read(3));
            header.paddingOnly = header.paddingBits == 0;
        }
        if (!header.idle && !header.paddingOnly)
            header.ParseFields(bits, config, hasClock);
        bits.AlignToByte();
        if (bits.Overrun())
            return std::nullopt;
        header.size = bits.Position() / 8;
        return header;
    }

    // The header's bytes. Values for which the configuration has no field are left out.
    [[nodiscard]] std::vector<std::uint8_t> Write(const SlConfig& config) const {
        BitWriter bits;
        if (config.predefined != 0)
            return {};
        if (config.useAccessUnitStart)
            bits.WriteFlag(accessUnitStart);
        if (config.useAccessUnitEnd)
            bits.WriteFlag(accessUnitEnd);
        if (config.ocrLength > 0)
            bits.WriteFlag(clockReference.has_value());
        if (config.useIdle)
            bits.WriteFlag(idle);
        if (config.usePadding) {
            const bool padding = paddingOnly || paddingBits != 0;
            bits.WriteFlag(padding);
            if (padding)
                bits.Write(paddingBits, 3);
        }
        if (!idle && !paddingOnly)
            WriteFields(bits, config);
        bits.AlignToByte();
        return bits.Take();
    }

private:
    void ParseFields(BitReader& bits, const SlConfig& config, bool hasClock) {
        packetSequence = bits.Read(config.packetSequenceLength);
        if (config.degradationPriorityLength > 0 && bits.ReadFlag())
            degradationPriority = bits.Read(config.degradationPriorityLength);
        if (hasClock)
            clockReference = ReadLong(bits, config.ocrLength);
        if (accessUnitStart) {
            if (config.useRandomAccessPoint)
                randomAccess = bits.ReadFlag();
            accessUnitSequence = bits.Read(config.accessUnitSequenceLength);
            const bool hasDecoding = config.useTimeStamps && bits.ReadFlag();
            const bool hasComposition = config.useTimeStamps && bits.ReadFlag();
            const bool hasBitrate = config.instantBitrateLength > 0 && bits.ReadFlag();
            if (hasDecoding)
                decodingTime = ReadLong(bits, config.timeStampLength);
            if (hasComposition)
                compositionTime = ReadLong(bits, config.timeStampLength);
            accessUnitLength = bits.Read(config.accessUnitLengthLength);
            if (hasBitrate)
                instantBitrate = bits.Read(config.instantBitrateLength);
        }
        randomAccess = randomAccess || (accessUnitStart && config.hasRandomAccessUnitsOnly);
    }

    void WriteFields(BitWriter& bits, const SlConfig& config) const {
        bits.Write(packetSequence, config.packetSequenceLength);
        if (config.degradationPriorityLength > 0) {
            bits.WriteFlag(degradationPriority.has_value());
            if (degradationPriority)
                bits.Write(*degradationPriority, config.degradationPriorityLength);
        }
        if (config.ocrLength > 0 && clockReference)
            WriteLong(bits, *clockReference, config.ocrLength);
        if (!accessUnitStart)
            return;
        if (config.useRandomAccessPoint)
            bits.WriteFlag(randomAccess);
        bits.Write(accessUnitSequence, config.accessUnitSequenceLength);
        if (config.useTimeStamps) {
            bits.WriteFlag(decodingTime.has_value());
            bits.WriteFlag(compositionTime.has_value());
        }
        if (config.instantBitrateLength > 0)
            bits.WriteFlag(instantBitrate.has_value());
        if (config.useTimeStamps && decodingTime)
            WriteLong(bits, *decodingTime, config.timeStampLength);
        if (config.useTimeStamps && compositionTime)
            WriteLong(bits, *compositionTime, config.timeStampLength);
        bits.Write(accessUnitLength, config.accessUnitLengthLength);
        if (config.instantBitrateLength > 0 && instantBitrate)
            bits.Write(*instantBitrate, config.instantBitrateLength);
    }

    // Fields of up to 64 bits.
    [[nodiscard]] static std::uint64_t ReadLong(BitReader& bits, unsigned count) {
        if (count <= 32)
            return bits.Read(count);
        const std::uint64_t high = bits.Read(count - 32);
        return high << 32 | bits.Read(32);
    }

    static void WriteLong(BitWriter& bits, std::uint64_t value, unsigned count) {
        if (count > 32)
            bits.Write(static_cast<std::uint32_t>(value >> 32), count - 32);
        bits.Write(static_cast<std::uint32_t>(value & 0xFFFF'FFFF), count > 32 ? 32 : count);
    }
};

} // namespace wire

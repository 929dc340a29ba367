#include "host/codec/BsacConfig.h"

#include "host/wire/BitReader.h"
#include "host/wire/BitWriter.h"

namespace codec {

namespace {
constexpr unsigned kErBsac = 22; // audioObjectType
}

std::optional<BsacConfig> ParseBsacConfig(std::span<const std::uint8_t> bytes) {
    wire::BitReader reader(bytes);
    if (reader.Read(5) != kErBsac)
        return std::nullopt;
    BsacConfig config;
    config.rate = FindRateByIndex(reader.Read(4));
    if (config.rate == nullptr)
        return std::nullopt;
    config.channels = reader.Read(4);
    if (config.channels < 1 || config.channels > 2)
        return std::nullopt;
    const bool shortFrames = reader.ReadFlag();
    const bool coreCoder = reader.ReadFlag();
    const bool extension = reader.ReadFlag();
    if (shortFrames || coreCoder || !extension)
        return std::nullopt;
    config.subFrames = reader.Read(5);
    if (config.subFrames == 0)
        config.subFrames = 1;
    config.layerLength = reader.Read(11);
    reader.Skip(1); // extensionFlag3: nothing follows it for this object type
    const unsigned protection = reader.Read(2);
    if (protection != 0 || reader.Overrun())
        return std::nullopt;
    return config;
}

std::vector<std::uint8_t> WriteBsacConfig(const BsacConfig& config) {
    wire::BitWriter writer;
    writer.Write(kErBsac, 5);
    writer.Write(SamplingFrequencyIndex(config.SampleRate()), 4);
    writer.Write(config.channels, 4);
    writer.WriteFlag(false); // frameLengthFlag: 1024 samples
    writer.WriteFlag(false); // dependsOnCoreCoder
    writer.WriteFlag(true);  // extensionFlag
    writer.Write(config.subFrames, 5);
    writer.Write(config.layerLength, 11);
    writer.WriteFlag(false); // extensionFlag3
    writer.Write(0, 2);      // epConfig
    return writer.Take();
}

} // namespace codec

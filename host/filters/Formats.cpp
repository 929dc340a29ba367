#include "host/filters/Formats.h"

#include "host/codec/BsacConfig.h"
#include "host/wire/BitReader.h"
#include "host/wire/BitWriter.h"

#include <iterator>

namespace filters {

namespace {

constexpr unsigned kObjectBsac = 22;
constexpr unsigned kObjectSbr = 5;
constexpr unsigned kObjectPs = 29;
constexpr unsigned kObjectLc = 2;
constexpr unsigned kEscapedRate = 15;
constexpr int kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350};

unsigned ReadObjectType(wire::BitReader& bits) {
    const unsigned type = bits.Read(5);
    return type == 31 ? 32 + bits.Read(6) : type;
}

int ReadRate(wire::BitReader& bits) {
    const unsigned index = bits.Read(4);
    if (index == kEscapedRate)
        return static_cast<int>(bits.Read(24));
    return index < std::size(kRates) ? kRates[index] : 0;
}

AudioFormat BsacFormat(ByteSpan configuration) {
    AudioFormat format;
    format.configuration.assign(configuration.begin(), configuration.end());
    if (const auto bsac = codec::ParseBsacConfig(configuration)) {
        format.codec = AudioCodec::kBsac;
        format.sampleRate = static_cast<int>(bsac->SampleRate());
        format.channels = static_cast<int>(bsac->channels);
        format.samplesPerUnit = static_cast<int>(1024 * bsac->subFrames);
    }
    return format;
}

} // namespace

AudioFormat AudioFormatOf(ByteSpan configuration) {
    wire::BitReader bits(configuration);
    unsigned type = ReadObjectType(bits);
    if (type == kObjectBsac)
        return BsacFormat(configuration);
    AudioFormat format;
    format.configuration.assign(configuration.begin(), configuration.end());
    const int coreRate = ReadRate(bits);
    const unsigned channels = bits.Read(4);
    int rate = coreRate;
    const bool parametricStereo = type == kObjectPs;
    if (type == kObjectSbr || parametricStereo) {
        rate = ReadRate(bits);
        type = ReadObjectType(bits);
    }
    const bool shortFrames = bits.ReadFlag(); // 960 lines
    if (bits.Overrun() || type != kObjectLc || coreRate <= 0 || rate < coreRate || channels == 0 || channels > 7)
        return format;
    format.codec = AudioCodec::kAac;
    format.sampleRate = rate;
    format.channels = parametricStereo ? 2 : static_cast<int>(channels);
    format.samplesPerUnit = (shortFrames ? 960 : 1024) * (rate / coreRate);
    return format;
}

std::optional<AdtsHeader> AdtsHeader::Parse(ByteSpan bytes) {
    wire::BitReader bits(bytes);
    const bool isSync = bits.Read(12) == 0xFFF;
    bits.Skip(1); // MPEG-4 or MPEG-2, the same to us
    const unsigned layer = bits.Read(2);
    const bool noCheckSum = bits.ReadFlag();
    const unsigned profile = bits.Read(2);
    const unsigned rate = bits.Read(4);
    bits.Skip(1);
    const unsigned channels = bits.Read(3);
    bits.Skip(4);
    AdtsHeader header;
    header.frameBytes = bits.Read(13);
    header.headerBytes = noCheckSum ? 7 : 9;
    bits.Skip(13);
    if (bits.Overrun() || !isSync || layer != 0 || rate >= std::size(kRates) || header.frameBytes <= header.headerBytes)
        return std::nullopt;
    wire::BitWriter config;
    config.Write(profile + 1, 5);
    config.Write(rate, 4);
    config.Write(channels, 4);
    config.Write(0, 3);
    header.configuration = config.Take();
    return header;
}

} // namespace filters

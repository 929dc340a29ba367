#include "host/filters/Formats.h"

#include "host/codec/BsacConfig.h"
#include "host/wire/BitReader.h"

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

std::size_t AacConfigBits(ByteSpan configuration) {
    wire::BitReader bits(configuration);
    unsigned type = ReadObjectType(bits);
    (void)ReadRate(bits);
    const unsigned channels = bits.Read(4);
    if (type == kObjectSbr || type == kObjectPs) {
        (void)ReadRate(bits);
        type = ReadObjectType(bits);
    }
    if (type != kObjectLc || channels == 0)
        return 0;
    bits.Skip(1); // frame length
    if (bits.ReadFlag())
        bits.Skip(14); // delay of the core coder
    bits.Skip(1);      // extension: nothing follows for this type
    return bits.Overrun() ? 0 : bits.Position();
}

} // namespace filters

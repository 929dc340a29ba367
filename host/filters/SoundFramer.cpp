#include "host/filters/SoundFramer.h"

#include "host/wire/BitReader.h"
#include "host/wire/BitWriter.h"

#include <algorithm>
#include <array>

namespace filters {

namespace {

constexpr std::size_t kHeaderBytes = 7; // of the longest header, ADTS

// --- ADTS

constexpr std::size_t kAdtsRates = 13;

std::size_t AdtsBytes(ByteSpan bytes) {
    const bool isSync = bytes[0] == 0xFF && (bytes[1] & 0xF6) == 0xF0; // layer 0
    const std::size_t header = (bytes[1] & 1) != 0 ? 7 : 9;
    const std::size_t rate = bytes[2] >> 2 & 15;
    const std::size_t size =
        static_cast<std::size_t>(bytes[3] & 3) << 11 | static_cast<std::size_t>(bytes[4]) << 3 | bytes[5] >> 5;
    return isSync && rate < kAdtsRates && size > header ? size : 0;
}

// --- MPEG audio

struct MpegAudioHeader {
    int layer = 0; // 2 or 3
    int sampleRate = 0;
    int channels = 0;
    int samples = 0;
    std::size_t bytes = 0;

    // Layers II and III with a bit rate; the half sample rates of MPEG-2 and the quarter ones that grew out of them, too.
    static std::optional<MpegAudioHeader> Parse(ByteSpan data) {
        if (data.size() < 4 || data[0] != 0xFF || (data[1] & 0xE0) != 0xE0)
            return std::nullopt;
        constexpr std::array<std::array<int, 15>, 3> kBitRates = {{
            {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384}, // II
            {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},  // III
            {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},      // both at half rates
        }};
        constexpr std::array<int, 3> kRates = {44100, 48000, 32000};
        const unsigned version = data[1] >> 3 & 3; // 0: quarter rates, 2: half, 3: full
        const unsigned layerCode = data[1] >> 1 & 3;
        const std::size_t bitRate = data[2] >> 4;
        const std::size_t rate = data[2] >> 2 & 3;
        if (version == 1 || (layerCode != 1 && layerCode != 2) || bitRate == 0 || bitRate == 15 || rate == 3)
            return std::nullopt;
        MpegAudioHeader header;
        header.layer = layerCode == 2 ? 2 : 3;
        header.sampleRate = kRates[rate] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
        header.channels = data[3] >> 6 == 3 ? 1 : 2;
        header.samples = header.layer == 3 && version != 3 ? 576 : 1152;
        const int kbps = kBitRates[version == 3 ? (header.layer == 2 ? 0 : 1) : 2][bitRate];
        header.bytes =
            static_cast<std::size_t>(header.samples / 8 * kbps * 1000 / header.sampleRate) + (data[2] >> 1 & 1);
        return header;
    }
};

// --- LATM

std::size_t LoasBytes(ByteSpan bytes) {
    const bool isSync = bytes[0] == 0x56 && (bytes[1] & 0xE0) == 0xE0;
    const std::size_t size = static_cast<std::size_t>(bytes[1] & 0x1F) << 8 | bytes[2];
    return isSync && size > 0 ? size + 3 : 0;
}

std::uint32_t ReadLatmValue(wire::BitReader& bits) {
    const unsigned count = 8 * (bits.Read(2) + 1);
    return bits.Read(count);
}

Bytes CopyBits(wire::BitReader& bits, std::size_t count) {
    wire::BitWriter copy;
    for (; count >= 8; count -= 8)
        copy.Write(bits.Read(8), 8);
    copy.Write(bits.Read(static_cast<unsigned>(count)), static_cast<unsigned>(count));
    return copy.Take();
}

struct LatmConfig {
    AudioFormat format;
    unsigned subFrames = 0; // beyond the first

    // StreamMuxConfig, 1.7.3.1, of one programme with one layer, as everybody sends it.
    static std::optional<LatmConfig> Read(wire::BitReader& bits) {
        const bool versionOne = bits.ReadFlag();
        if (versionOne && bits.ReadFlag())
            return std::nullopt; // reserved
        if (versionOne)
            (void)ReadLatmValue(bits); // fullness of a buffer
        const bool sameFraming = bits.ReadFlag();
        LatmConfig config;
        config.subFrames = bits.Read(6);
        const bool alone = bits.Read(4) == 0 && bits.Read(3) == 0;
        if (!sameFraming || !alone)
            return std::nullopt;
        std::size_t size = versionOne ? ReadLatmValue(bits) : 0;
        if (!versionOne) {
            wire::BitReader ahead = bits;
            size = AacConfigBits(CopyBits(ahead, std::min<std::size_t>(ahead.Remaining(), 128)));
        }
        if (size == 0 || size > bits.Remaining())
            return std::nullopt;
        config.format = AudioFormatOf(CopyBits(bits, size));
        if (bits.Read(3) != 0) // frames of a length that each tells itself
            return std::nullopt;
        bits.Skip(8);          // fullness of the other buffer
        if (bits.ReadFlag()) { // other data
            if (versionOne) {
                (void)ReadLatmValue(bits);
            } else {
                while (bits.ReadFlag())
                    bits.Skip(8);
                bits.Skip(8);
            }
        }
        if (bits.ReadFlag())
            bits.Skip(8); // check sum
        if (bits.Overrun() || config.format.codec != AudioCodec::kAac)
            return std::nullopt;
        return config;
    }
};

} // namespace

std::size_t SoundFramer::SizeOf(ByteSpan bytes) const {
    if (layout_ == UnitLayout::kAdts)
        return AdtsBytes(bytes);
    if (layout_ == UnitLayout::kLatm)
        return LoasBytes(bytes);
    const auto header = MpegAudioHeader::Parse(bytes);
    return header ? header->bytes : 0;
}

void SoundFramer::Reset() {
    rest_.clear();
    locked_ = false;
}

void SoundFramer::Push(ByteSpan piece, const Sink& sink) {
    const std::size_t before = rest_.size();
    rest_.insert(rest_.end(), piece.begin(), piece.end());
    const ByteSpan all(rest_);
    std::size_t at = 0;
    while (all.size() - at >= kHeaderBytes) {
        const std::size_t size = SizeOf(all.subspan(at));
        if (size == 0) {
            locked_ = false;
            ++at;
            continue;
        }
        if (all.size() - at < size)
            break;
        const std::size_t next = at + size;
        // A packet that ends with its frame is proof as well: many multiplexers send them so.
        if (!locked_ && next != all.size()) {
            if (all.size() - next < kHeaderBytes)
                break;
            if (SizeOf(all.subspan(next)) == 0) {
                ++at;
                continue;
            }
        }
        locked_ = true;
        Take(all.subspan(at, size), at >= before, sink);
        at = next;
    }
    rest_.erase(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(at));
}

void SoundFramer::Take(ByteSpan frame, bool beginsHere, const Sink& sink) {
    if (layout_ == UnitLayout::kAdts)
        TakeAdts(frame, beginsHere, sink);
    else if (layout_ == UnitLayout::kLatm)
        TakeLatm(frame, beginsHere, sink);
    else
        TakeMpegAudio(frame, beginsHere, sink);
}

void SoundFramer::TakeAdts(ByteSpan frame, bool beginsHere, const Sink& sink) {
    wire::BitWriter config;
    config.Write((frame[2] >> 6) + 1U, 5);                 // object type
    config.Write(frame[2] >> 2 & 15U, 4);                  // sample rate
    config.Write((frame[2] & 1U) << 2 | frame[3] >> 6, 4); // channels
    config.Write(0, 3);
    SoundFrame out;
    out.format = AudioFormatOf(config.Take());
    const std::size_t header = (frame[1] & 1) != 0 ? 7 : 9;
    if (out.format.codec == AudioCodec::kUnsupported)
        return;
    out.bytes.assign(frame.begin() + static_cast<std::ptrdiff_t>(header), frame.end());
    out.beginsHere = beginsHere;
    sink(out);
}

void SoundFramer::TakeMpegAudio(ByteSpan frame, bool beginsHere, const Sink& sink) {
    const auto header = MpegAudioHeader::Parse(frame);
    if (!header)
        return;
    SoundFrame out;
    out.format.codec = header->layer == 2 ? AudioCodec::kLayerTwo : AudioCodec::kLayerThree;
    out.format.sampleRate = header->sampleRate;
    out.format.channels = header->channels;
    out.format.samplesPerUnit = header->samples;
    out.bytes.assign(frame.begin(), frame.end());
    out.beginsHere = beginsHere;
    sink(out);
}

// AudioMuxElement, 1.7.3.1.
void SoundFramer::TakeLatm(ByteSpan frame, bool beginsHere, const Sink& sink) {
    wire::BitReader bits(frame.subspan(3));
    const bool sameConfig = bits.ReadFlag();
    if (!sameConfig) {
        auto config = LatmConfig::Read(bits);
        format_ = config ? std::move(config->format) : AudioFormat{};
        subFrames_ = config ? config->subFrames : 0;
    }
    if (format_.codec == AudioCodec::kUnsupported)
        return;
    for (unsigned i = 0; i <= subFrames_; ++i) {
        std::size_t size = 0;
        for (std::uint32_t part = 255; part == 255 && !bits.Overrun();) {
            part = bits.Read(8);
            size += part;
        }
        if (size == 0 || bits.Overrun() || size * 8 > bits.Remaining())
            return;
        sink({CopyBits(bits, size * 8), format_, beginsHere && i == 0});
    }
}

} // namespace filters

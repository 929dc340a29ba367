#include "host/headend/LayerTwoEncoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

#include "host/wire/BitReader.h"
#include "host/wire/Crc.h"
#include "host/wire/LayerTwo.h"
#include "host/wire/Pad.h"

namespace headend {

namespace {

constexpr std::array<int, 14> kFullRates = {32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384};
constexpr std::array<int, 14> kHalfRates = {8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};

const std::array<int, 14>& RatesOf(int sampleRate) {
    return sampleRate == 24000 ? kHalfRates : kFullRates;
}

wire::LayerTwoHeader HeaderOf(const LayerTwoSettings& settings, int kbps) {
    wire::LayerTwoHeader header;
    header.halfRate = settings.sampleRate == 24000;
    header.hasCrc = true;
    header.bitRate = kbps;
    header.sampleRate = settings.sampleRate;
    header.mode = settings.channels == 1 ? 3 : 0;
    return header;
}

// ISO 11172-3 tables B.2 and ISO 13818-3 table B.1: rates with the same bit allocation table can be exchanged.
int AllocationClass(const wire::LayerTwoHeader& header) {
    if (header.halfRate)
        return 0;
    return header.bitRate / header.Channels() < 56 ? 1 : 2;
}

// ISO 11172-3 2.4.2.3: at 48 kHz some rates exist for one channel only, others for two only.
bool IsAllowed(const LayerTwoSettings& settings, int kbps) {
    if (settings.sampleRate == 24000)
        return true;
    const bool singleOnly = kbps == 32 || kbps == 48 || kbps == 56 || kbps == 80;
    const bool doubleOnly = kbps >= 224;
    return settings.channels == 1 ? !doubleOnly : !singleOnly;
}

// What the frame's side information says: where it ends, and the scale factors.
struct SideInformation {
    std::size_t endOfSelection = 0; // bit behind the last scale factor selection
    // Indices of the scale factors that are sent, subband by subband, in order of sending.
    std::array<std::vector<std::uint8_t>, 32> factors;
    int subbands = 0;
    bool valid = false;
};

SideInformation ReadSideInformation(wire::ByteSpan frame, const wire::LayerTwoHeader& header) {
    SideInformation info;
    const auto& table = wire::detail::AllocationTableOf(header);
    info.subbands = table.subbands;
    const int channels = header.Channels();
    const int bound = header.mode == 1 ? 4 * (header.modeExtension + 1) : table.subbands;
    wire::BitReader bits(frame, header.hasCrc ? 48 : 32, frame.size() * 8);
    std::array<std::array<bool, 2>, 32> used{};
    for (int band = 0; band < table.subbands; ++band) {
        const auto width = static_cast<unsigned>(table.BitsOf(band));
        const auto at = static_cast<std::size_t>(band);
        used[at][0] = bits.Read(width) != 0;
        if (channels == 2)
            used[at][1] = band < bound ? bits.Read(width) != 0 : used[at][0];
    }
    std::array<std::array<std::uint32_t, 2>, 32> selection{};
    for (std::size_t band = 0; band < static_cast<std::size_t>(table.subbands); ++band) {
        for (std::size_t channel = 0; channel < static_cast<std::size_t>(channels); ++channel)
            selection[band][channel] = used[band][channel] ? bits.Read(2) : 0;
    }
    info.endOfSelection = bits.Position();
    for (std::size_t band = 0; band < static_cast<std::size_t>(table.subbands); ++band) {
        for (std::size_t channel = 0; channel < static_cast<std::size_t>(channels); ++channel) {
            if (!used[band][channel])
                continue;
            constexpr std::array<int, 4> kSent = {3, 2, 1, 2}; // 2.4.2.6: factors sent for each selection
            for (int i = 0; i < kSent[selection[band][channel]]; ++i)
                info.factors[band].push_back(static_cast<std::uint8_t>(bits.Read(6)));
        }
    }
    info.valid = !bits.Overrun();
    return info;
}

std::uint8_t FactorCrc(const SideInformation& info, std::size_t from, std::size_t to) {
    // Annex B: x^8 + x^4 + x^3 + x^2 + 1 over the three most significant bits of each scale factor, register at zero.
    unsigned crc = 0;
    for (std::size_t band = from; band < to; ++band) {
        for (const std::uint8_t factor : info.factors[band]) {
            for (int bit = 5; bit >= 3; --bit) {
                const bool carry = (crc >> 7 & 1) != (static_cast<unsigned>(factor) >> bit & 1);
                crc = (crc << 1 & 0xFF) ^ (carry ? 0x1Du : 0u);
            }
        }
    }
    return static_cast<std::uint8_t>(crc);
}

// libavcodec's coder fills its frame to the brim and adds no check sum, so it runs at a lower rate than the sub-channel:
// the header is changed to the sub-channel's rate, the check sum goes in, and what is left is the room for PAD.
class Coder {
public:
    Coder(const LayerTwoSettings& layerSettings, int coderKbps) : settings(layerSettings) {
        const AVCodec* codec = avcodec_find_encoder_by_name("mp2");
        Check(codec != nullptr, "libavcodec has no mp2 encoder");
        context.reset(avcodec_alloc_context3(codec));
        Check(context != nullptr, "out of memory");
        context->sample_rate = settings.sampleRate;
        context->sample_fmt = AV_SAMPLE_FMT_S16;
        context->bit_rate = coderKbps * 1000;
        av_channel_layout_default(&context->ch_layout, settings.channels);
        Check(avcodec_open2(context.get(), codec, nullptr) == 0, "settings refused");
        frame.reset(av_frame_alloc());
        packet.reset(av_packet_alloc());
        Check(frame && packet, "out of memory");
        frame->format = context->sample_fmt;
        frame->nb_samples = wire::kLayerTwoSamples;
        frame->sample_rate = settings.sampleRate;
        Check(av_channel_layout_copy(&frame->ch_layout, &context->ch_layout) == 0, "out of memory");
        Check(av_frame_get_buffer(frame.get(), 0) == 0, "out of memory");
    }

    // Null: no more samples are coming.
    void Push(const float* samples, std::size_t count, std::vector<wire::ByteVector>& out) {
        if (samples != nullptr) {
            Check(av_frame_make_writable(frame.get()) == 0, "out of memory");
            auto* to = reinterpret_cast<std::int16_t*>(frame->data[0]);
            const auto channels = static_cast<std::size_t>(settings.channels);
            for (std::size_t i = 0; i < wire::kLayerTwoSamples * channels; ++i)
                to[i] = i < count ? static_cast<std::int16_t>(std::lround(samples[i] * 32767)) : std::int16_t{0};
        }
        Check(avcodec_send_frame(context.get(), samples != nullptr ? frame.get() : nullptr) == 0, "frame refused");
        while (avcodec_receive_packet(context.get(), packet.get()) == 0) {
            out.push_back(Dress({packet->data, static_cast<std::size_t>(packet->size)}));
            av_packet_unref(packet.get());
        }
    }

private:
    struct ContextFree {
        void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
    };
    struct FrameFree {
        void operator()(AVFrame* f) const { av_frame_free(&f); }
    };
    struct PacketFree {
        void operator()(AVPacket* p) const { av_packet_free(&p); }
    };

    static void Check(bool good, const char* what) {
        if (!good)
            throw std::runtime_error(std::string("layer II encoder: ") + what);
    }

    [[nodiscard]] wire::ByteVector Dress(wire::ByteSpan coded) const {
        const wire::LayerTwoHeader header = HeaderOf(settings, settings.kbps);
        const auto& rates = RatesOf(settings.sampleRate);
        const auto index =
            static_cast<unsigned>(std::find(rates.begin(), rates.end(), settings.kbps) - rates.begin()) + 1;
        wire::ByteVector out(header.FrameBytes());
        std::copy_n(coded.begin(), 4, out.begin());
        out[1] &= 0xFE; // protection_bit 0: the check sum follows
        out[2] = static_cast<std::uint8_t>(index << 4 | (out[2] & 0x0D));
        std::copy(coded.begin() + 4, coded.end(), out.begin() + 6);
        const SideInformation info = ReadSideInformation(out, header);
        Check(info.valid, "unreadable frame");
        const std::uint16_t crc = wire::AudioCrc(out, 48, info.endOfSelection - 48, wire::AudioCrc(out, 16, 16));
        wire::Put16(out, 4, crc);
        return out;
    }

    LayerTwoSettings settings;
    std::unique_ptr<AVCodecContext, ContextFree> context;
    std::unique_ptr<AVFrame, FrameFree> frame;
    std::unique_ptr<AVPacket, PacketFree> packet;
};

} // namespace

int LayerTwoCoderKbps(const LayerTwoSettings& settings) {
    const auto& rates = RatesOf(settings.sampleRate);
    if (std::find(rates.begin(), rates.end(), settings.kbps) == rates.end() || !IsAllowed(settings, settings.kbps))
        return 0;
    const wire::LayerTwoHeader whole = HeaderOf(settings, settings.kbps);
    const std::size_t needed = 2 + settings.padBytes + whole.ScfCrcBytes() + wire::kFPadBytes;
    int best = 0;
    for (const int kbps : rates) {
        const wire::LayerTwoHeader header = HeaderOf(settings, kbps);
        if (IsAllowed(settings, kbps) && AllocationClass(header) == AllocationClass(whole) &&
            header.FrameBytes() + needed <= whole.FrameBytes())
            best = kbps;
    }
    return best;
}

wire::ByteVector ScaleFactorCrcs(wire::ByteSpan frame) {
    const auto header = wire::ParseLayerTwoHeader(frame);
    if (!header)
        return {};
    const SideInformation info = ReadSideInformation(frame, *header);
    if (!info.valid)
        return {};
    constexpr std::array<std::size_t, 5> kGroups = {0, 4, 8, 16, 30};
    wire::ByteVector crcs;
    for (std::size_t group = header->ScfCrcBytes(); group-- > 0;)
        crcs.push_back(FactorCrc(info, kGroups[group],
                                 std::min<std::size_t>(kGroups[group + 1], static_cast<std::size_t>(info.subbands))));
    return crcs;
}

std::vector<wire::ByteVector> EncodeLayerTwo(const LayerTwoSettings& settings, std::span<const float> samples) {
    const int coderKbps = LayerTwoCoderKbps(settings);
    if (coderKbps == 0)
        throw std::runtime_error("layer II encoder: no rate leaves room for this much PAD");
    std::vector<wire::ByteVector> frames;
    Coder coder(settings, coderKbps);
    const std::size_t step =
        static_cast<std::size_t>(wire::kLayerTwoSamples) * static_cast<std::size_t>(settings.channels);
    for (std::size_t at = 0; at < samples.size(); at += step)
        coder.Push(samples.data() + at, std::min(step, samples.size() - at), frames);
    coder.Push(nullptr, 0, frames);

    // Each frame carries the sums of the one after it; the last those of the first, as if played in a loop.
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const wire::ByteVector crcs = ScaleFactorCrcs(frames[(i + 1) % frames.size()]);
        std::copy(crcs.begin(), crcs.end(),
                  frames[i].end() - static_cast<std::ptrdiff_t>(wire::kFPadBytes + crcs.size()));
    }
    return frames;
}

} // namespace headend

// Any configuration, any access units: the decoder takes bounded time, reads inside its input and gives whole blocks.
//
// Input: five bytes AudioSpecificConfig, then access units behind 16-bit big-endian lengths (the last one may be cut).
// By hand over files: fuzz_bsac_decoder FILE...
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <span>
#include <tuple>

#include "host/codec/BsacConfig.h"
#include "host/codec/BsacDecoder.h"

namespace {

void Require(bool condition) {
    if (!condition)
        std::abort();
}

// Making a decoder takes far longer than a block, so those for one configuration are kept.
codec::BsacDecoder& DecoderFor(const codec::BsacConfig& config) {
    static std::map<std::tuple<unsigned, unsigned, unsigned>, std::unique_ptr<codec::BsacDecoder>> decoders;
    auto& decoder = decoders[{config.SampleRate(), config.channels, config.subFrames}];
    if (!decoder)
        decoder = std::make_unique<codec::BsacDecoder>(config);
    decoder->Flush();
    return *decoder;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kConfigBytes = 5;
    std::span<const std::uint8_t> input(data, size);
    const auto config = codec::ParseBsacConfig(input.first(size < kConfigBytes ? size : kConfigBytes));
    if (!config || size < kConfigBytes)
        return 0;
    Require(config->rate != nullptr && config->channels >= 1 && config->channels <= 2 && config->subFrames >= 1);
    codec::BsacDecoder& decoder = DecoderFor(*config);
    input = input.subspan(kConfigBytes);
    // More blocks show nothing new: what one hands on to the next is spectra and samples.
    constexpr unsigned kMostBlocks = 3;
    unsigned total = 0;
    while (input.size() >= 2 && total < kMostBlocks) {
        const std::size_t length = static_cast<std::size_t>(input[0]) << 8 | input[1];
        input = input.subspan(2);
        const auto unit = input.first(length < input.size() ? length : input.size());
        input = input.subspan(unit.size());
        decoder.Push(unit);
        unsigned blocks = 0;
        while (const auto block = decoder.Next()) {
            Require(block->samples.size() == static_cast<std::size_t>(codec::kSamplesPerBlock) * config->channels);
            ++blocks;
            if (++total >= kMostBlocks)
                break;
        }
        Require(blocks >= 1 && blocks <= codec::BsacDecoder::kMaxBlocksPerUnit);
    }
    return 0;
}

// A whole decode into a destination between guard zones. The last three bytes of the input choose the format and the target's
// size, so that odd sizes and all three formats are met. Most mutations are kept to small frames: what a large one adds is
// time, and a thousand small pictures find more than one large one.
//
//   build/fuzz/bin/fuzz_jpeg_decode fuzz/corpus/jpeg
#include "jpeg/JpegDecoder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

constexpr std::size_t kGuard = 64;
constexpr std::uint8_t kUntouched = 0x5C;

constexpr int kSmallSide = 96;

// Brings the sides of all frame headers down to kSmallSide.
void ShrinkFrames(std::uint8_t* data, std::size_t size) {
    for (std::size_t i = 0; i + 8 < size; ++i) {
        if (data[i] != 0xFF || (data[i + 1] != 0xC0 && data[i + 1] != 0xC2)) {
            continue;
        }
        for (const std::size_t at : {i + 5, i + 7}) {
            const int side = data[at] << 8 | data[at + 1];
            if (side > kSmallSide) {
                data[at] = 0;
                data[at + 1] = static_cast<std::uint8_t>(1 + side % kSmallSide);
            }
        }
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
    size = LLVMFuzzerMutate(data, size, maxSize);
    if (seed % 64 != 0) {
        ShrinkFrames(data, size);
    }
    return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) {
        return 0;
    }
    const std::uint8_t* choice = data + size - 3;
    JpegImageInfo info{};
    info.outputFormat = choice[0] % 3;
    info.noThumbnail = choice[0] >> 7;
    const int width = choice[1] % 97 + 1;
    const int height = choice[2] % 61 + 1;
    const auto pixels = static_cast<std::size_t>(width * height);
    const auto chroma = static_cast<std::size_t>((width + 1) / 2 * ((height + 1) / 2));
    const std::size_t needed = info.outputFormat == 1   ? 3 * pixels
                               : info.outputFormat == 0 ? 2 * pixels
                                                        : std::max(2 * pixels, pixels + 2 * chroma);
    std::vector<std::uint8_t> buffer(needed + 2 * kGuard, kUntouched);
    const int result = ImgDecodeJPEG(data, static_cast<int>(size - 3), buffer.data() + kGuard, width, height, &info);
    const auto isUntouched = [](std::uint8_t byte) { return byte == kUntouched; };
    if ((result != 0 && result != 1) || !std::all_of(buffer.begin(), buffer.begin() + kGuard, isUntouched) ||
        !std::all_of(buffer.end() - kGuard, buffer.end(), isUntouched)) {
        std::abort();
    }
    return 0;
}

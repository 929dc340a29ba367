#include "host/codec/av/Mdct.h"

#include <cstddef>
#include <cstdint>
#include <new>

extern "C" {
#include <libavutil/tx.h>
}

namespace codec::av {

struct Mdct::Impl {
    AVTXContext* context = nullptr;
    av_tx_fn run = nullptr;
};

Mdct::Mdct(Direction direction, unsigned lines, float scale) : impl(std::make_unique<Impl>()) {
    const bool inverse = direction == Direction::kInverse;
    std::uint64_t flags = 0;
    if (inverse) {
        flags = AV_TX_FULL_IMDCT;
        scale = -scale; // the library's full inverse has the other polarity
    }
    if (av_tx_init(&impl->context, &impl->run, AV_TX_FLOAT_MDCT, inverse ? 1 : 0, static_cast<int>(lines), &scale,
                   flags) < 0)
        throw std::bad_alloc();
}

Mdct::~Mdct() {
    av_tx_uninit(&impl->context);
}

void Mdct::Run(float* output, const float* input) {
    impl->run(impl->context, output, const_cast<float*>(input), sizeof(float));
}

} // namespace codec::av

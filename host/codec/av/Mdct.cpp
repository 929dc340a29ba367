#include "host/codec/av/Mdct.h"

#include <cstddef>
#include <new>

extern "C" {
#include <libavutil/tx.h>
}

namespace codec::av {

struct Mdct::Impl {
    AVTXContext* context = nullptr;
    av_tx_fn run = nullptr;
};

Mdct::Mdct(unsigned lines, float scale) : impl(std::make_unique<Impl>()) {
    if (av_tx_init(&impl->context, &impl->run, AV_TX_FLOAT_MDCT, 0, static_cast<int>(lines), &scale, 0) < 0)
        throw std::bad_alloc();
}

Mdct::~Mdct() {
    av_tx_uninit(&impl->context);
}

void Mdct::Run(float* output, const float* input) {
    impl->run(impl->context, output, const_cast<float*>(input), sizeof(float));
}

} // namespace codec::av

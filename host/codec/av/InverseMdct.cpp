#include "host/codec/av/InverseMdct.h"

#include <array>
#include <cmath>
#include <cstring>
#include <new>
#include <numbers>
#include <utility>

extern "C" {
#include <libavutil/tx.h>
}

namespace codec::av {

namespace {

constexpr unsigned kMostPoints = 512;

using Vector [[gnu::vector_size(16)]] = float;
constexpr unsigned kStep = 4; // points at a time

Vector Load(const float* source) {
    Vector vector;
    std::memcpy(&vector, source, sizeof vector);
    return vector;
}

void Store(float* target, Vector vector) {
    std::memcpy(target, &vector, sizeof vector);
}

using Numbers = std::array<float, kMostPoints>;

} // namespace

struct alignas(InverseMdct::kAlignment) InverseMdct::Impl {
    std::array<float, 2 * kMostPoints> turned{}; // complex points before the transform, and after it
    std::array<float, 2 * kMostPoints> transformed{};
    Numbers cosine{}; // of the turn of each point
    Numbers sine{};
    std::size_t points = 0; // a quarter of N
    AVTXContext* context = nullptr;
    av_tx_fn run = nullptr;
};

InverseMdct::InverseMdct(unsigned lines, float scale) : impl(std::make_unique<Impl>()) {
    impl->points = lines / 2;
    if (impl->points > kMostPoints)
        throw std::bad_alloc();
    // Every point is turned before and after, so each turn carries the root of the scale.
    const double root = std::sqrt(scale);
    for (std::size_t k = 0; k < impl->points; ++k) {
        const double angle = std::numbers::pi / lines * (static_cast<double>(k) + 0.125);
        impl->cosine[k] = static_cast<float>(root * std::cos(angle));
        impl->sine[k] = static_cast<float>(root * std::sin(angle));
    }
    const float one = 1;
    if (av_tx_init(&impl->context, &impl->run, AV_TX_FLOAT_FFT, 1, static_cast<int>(impl->points), &one, 0) < 0)
        throw std::bad_alloc();
}

InverseMdct::~InverseMdct() {
    av_tx_uninit(&impl->context);
}

// The even lines and the odd ones backwards make the complex numbers that the transform takes; real parts of what it
// gives are the even samples, imaginary parts the odd ones backwards.
void InverseMdct::Run(float* output, const float* input) {
    Impl& t = *impl;
    const std::size_t lines = 2 * t.points;
    for (std::size_t k = 0; k < t.points; k += kStep) {
        const float* rising = input + 2 * k;
        const float* falling = input + lines - 2 * k;
        const Vector even = __builtin_shufflevector(Load(rising), Load(rising + 4), 0, 2, 4, 6);
        const Vector odd = __builtin_shufflevector(Load(falling - 4), Load(falling - 8), 3, 1, 7, 5);
        const Vector c = Load(&t.cosine[k]);
        const Vector s = Load(&t.sine[k]);
        const Vector real = odd * c - even * s;
        const Vector imaginary = odd * s + even * c;
        Store(&t.turned[2 * k], __builtin_shufflevector(real, imaginary, 0, 4, 1, 5));
        Store(&t.turned[2 * k + 4], __builtin_shufflevector(real, imaginary, 2, 6, 3, 7));
    }
    t.run(t.context, t.transformed.data(), t.turned.data(), 2 * sizeof(float));
    const auto turn = [&t](std::size_t k) {
        const Vector low = Load(&t.transformed[2 * k]);
        const Vector high = Load(&t.transformed[2 * k + 4]);
        const Vector real = __builtin_shufflevector(low, high, 0, 2, 4, 6);
        const Vector imaginary = __builtin_shufflevector(low, high, 1, 3, 5, 7);
        const Vector c = Load(&t.cosine[k]);
        const Vector s = Load(&t.sine[k]);
        const Vector odd = -(real * s + imaginary * c);
        return std::pair(real * c - imaginary * s, __builtin_shufflevector(odd, odd, 3, 2, 1, 0));
    };
    const auto store = [](float* target, Vector even, Vector odd) {
        Store(target, __builtin_shufflevector(even, odd, 0, 4, 1, 5));
        Store(target + 4, __builtin_shufflevector(even, odd, 2, 6, 3, 7));
    };
    for (std::size_t k = 0; k < t.points / 2; k += kStep) {
        const std::size_t mirrored = t.points - kStep - k;
        const auto [even, odd] = turn(k);
        const auto [mirroredEven, mirroredOdd] = turn(mirrored);
        store(output + 2 * k, even, mirroredOdd);
        store(output + 2 * mirrored, mirroredEven, odd);
    }
}

} // namespace codec::av

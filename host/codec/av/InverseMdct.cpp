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

#include "host/codec/Wide.h"

namespace codec::av {

namespace {

constexpr unsigned kMostPoints = 512;

// The lanes of a vector register and the ways in which two of them mix. All by reference, as a vector wider than every
// processor's has no place in a call.
template <unsigned kLanes, class Indices = std::make_integer_sequence<int, kLanes>> struct Lanes;

template <unsigned kLanes, int... kIndex> struct Lanes<kLanes, std::integer_sequence<int, kIndex...>> {
    using Vector [[gnu::vector_size(kLanes * sizeof(float))]] = float;
    static constexpr int kCount = kLanes;
    static constexpr int kHalf = kLanes / 2;

    [[gnu::always_inline]] static void Load(const float* source, Vector& vector) {
        std::memcpy(&vector, source, sizeof vector);
    }
    [[gnu::always_inline]] static void Store(float* target, const Vector& vector) {
        std::memcpy(target, &vector, sizeof vector);
    }
    // The numbers 0, 2, 4, ... of the two after each other.
    [[gnu::always_inline]] static void Even(const Vector& low, const Vector& high, Vector& even) {
        even = __builtin_shufflevector(low, high, (2 * kIndex)...);
    }
    [[gnu::always_inline]] static void Odd(const Vector& low, const Vector& high, Vector& odd) {
        odd = __builtin_shufflevector(low, high, (2 * kIndex + 1)...);
    }
    [[gnu::always_inline]] static void Reverse(Vector& vector) {
        vector = __builtin_shufflevector(vector, vector, (kCount - 1 - kIndex)...);
    }
    // even 0, odd 0, even 1, odd 1, ...
    [[gnu::always_inline]] static void StoreMixed(float* target, const Vector& even, const Vector& odd) {
        Store(target, __builtin_shufflevector(even, odd, (kIndex / 2 + kIndex % 2 * kCount)...));
        Store(target + kCount, __builtin_shufflevector(even, odd, (kHalf + kIndex / 2 + kIndex % 2 * kCount)...));
    }
};

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
template <unsigned kLanes>
[[gnu::always_inline]] inline void InverseMdct::RunAsIs(Impl& t, float* output, const float* input) {
    using L = Lanes<kLanes>;
    using Vector = typename L::Vector;
    const std::size_t lines = 2 * t.points;
    Vector low, high, c, s;
    for (std::size_t k = 0; k < t.points; k += kLanes) {
        Vector even, odd;
        L::Load(input + 2 * k, low);
        L::Load(input + 2 * k + kLanes, high);
        L::Even(low, high, even);
        L::Load(input + lines - 2 * k - 2 * kLanes, low);
        L::Load(input + lines - 2 * k - kLanes, high);
        L::Odd(low, high, odd);
        L::Reverse(odd);
        L::Load(&t.cosine[k], c);
        L::Load(&t.sine[k], s);
        L::StoreMixed(&t.turned[2 * k], odd * c - even * s, odd * s + even * c);
    }
    t.run(t.context, t.transformed.data(), t.turned.data(), 2 * sizeof(float));
    const auto turn = [&](std::size_t k, Vector & even, Vector & odd) __attribute__((always_inline)) {
        Vector real, imaginary;
        L::Load(&t.transformed[2 * k], low);
        L::Load(&t.transformed[2 * k + kLanes], high);
        L::Even(low, high, real);
        L::Odd(low, high, imaginary);
        L::Load(&t.cosine[k], c);
        L::Load(&t.sine[k], s);
        even = real * c - imaginary * s;
        odd = -(real * s + imaginary * c);
        L::Reverse(odd);
    };
    for (std::size_t k = 0; k < t.points / 2; k += kLanes) {
        const std::size_t mirrored = t.points - kLanes - k;
        Vector even, odd, mirroredEven, mirroredOdd;
        turn(k, even, odd);
        turn(mirrored, mirroredEven, mirroredOdd);
        L::StoreMixed(output + 2 * k, even, mirroredOdd);
        L::StoreMixed(output + 2 * mirrored, mirroredEven, odd);
    }
}

DMB_CODEC_WIDE void InverseMdct::RunWide(Impl& transform, float* output, const float* input) {
    RunAsIs<8>(transform, output, input);
}

void InverseMdct::Run(float* output, const float* input) {
    if (HasWideVectors())
        RunWide(*impl, output, input);
    else
        RunAsIs<4>(*impl, output, input);
}

} // namespace codec::av

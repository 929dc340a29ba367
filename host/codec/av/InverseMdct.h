// The inverse of the modified discrete cosine transform, on a complex transform from libavutil.
#pragma once

#include <cstddef>
#include <memory>

namespace codec::av {

// Makes samples x of `lines` coefficients X, with N = 2 * lines:
//   x[n] = scale * sum over k of X[k] cos(2 pi / N (n + N / 4 + 1 / 2)(k + 1 / 2))
// for the middle half n = N / 4 .. 3 N / 4 - 1. The outer quarters mirror it: x[N / 2 - 1 - n] = -x[n] for n < N / 2,
// x[3 N / 2 - 1 - n] = x[n] for n >= N / 2.
class InverseMdct {
public:
    static constexpr std::size_t kAlignment = 64; // of all pointers

    // `lines` is a power of two, 32 or more. Throws std::bad_alloc.
    InverseMdct(unsigned lines, float scale);
    ~InverseMdct();
    InverseMdct(const InverseMdct&) = delete;
    InverseMdct& operator=(const InverseMdct&) = delete;

    // `lines` numbers each. The input is left as it is; the two must not overlap. Allocates nothing.
    void Run(float* output, const float* input);

private:
    struct Impl;
    template <unsigned kLanes> static void RunAsIs(Impl& transform, float* output, const float* input);
    static void RunWide(Impl& transform, float* output, const float* input);

    std::unique_ptr<Impl> impl;
};

} // namespace codec::av

// The modified discrete cosine transform, from libavutil.
#pragma once

#include <cstddef>
#include <memory>

namespace codec::av {

// Transforms between `lines` coefficients X and N = 2 * lines samples x, with
//   inverse  x[n] = scale * sum over k of X[k] cos(2 pi / N (n + N / 4 + 1 / 2)(k + 1 / 2))
//   forward  X[k] = scale * sum over n of x[n] cos(the same)
class Mdct {
public:
    static constexpr std::size_t kAlignment = 64; // what the widest vector instructions ask for

    enum class Direction { kForward, kInverse };

    // `lines` is a power of two, 32 or more. Throws std::bad_alloc.
    Mdct(Direction direction, unsigned lines, float scale);
    ~Mdct();
    Mdct(const Mdct&) = delete;
    Mdct& operator=(const Mdct&) = delete;

    // Neither pointer needs an alignment. The input is left as it is; the two must not overlap. Allocates
    // nothing.
    void Run(float* output, const float* input);

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace codec::av

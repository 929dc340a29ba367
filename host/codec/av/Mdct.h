// The modified discrete cosine transform, from libavutil.
#pragma once

#include <cstddef>
#include <memory>

namespace codec::av {

// Makes `lines` coefficients X of N = 2 * lines samples x:
//   X[k] = scale * sum over n of x[n] cos(2 pi / N (n + N / 4 + 1 / 2)(k + 1 / 2))
class Mdct {
public:
    static constexpr std::size_t kAlignment = 64; // what the widest vector instructions ask for

    // `lines` is a power of two, 32 or more. Throws std::bad_alloc.
    Mdct(unsigned lines, float scale);
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

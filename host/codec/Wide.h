// Loops over samples are compiled twice: for every processor, and for those with the wider vectors of AVX2. The results are the same
// to the last bit, as no multiplication is joined with an addition.
#pragma once

#if defined(__x86_64__)
#define DMB_CODEC_WIDE [[gnu::target("avx2")]]
#else
#define DMB_CODEC_WIDE
#endif

namespace codec {

// Whether this processor runs what is marked DMB_CODEC_WIDE.
[[nodiscard]] inline bool HasWideVectors() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

} // namespace codec

#include "jpeg/ResampleSse2.h"

#if DMB_JPEG_SSE2

#include <algorithm>

namespace jpeg::sse2 {

namespace {

using Lanes = __m128i;

Lanes LoadWords(const std::uint32_t* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

// Four pixels, a lane of 32 bits each; the sign is spread for the signed narrowing.
Lanes Pack565(Lanes words) {
    const Lanes red = _mm_and_si128(_mm_srli_epi32(words, 8), _mm_set1_epi32(0xF800));
    const Lanes green = _mm_and_si128(_mm_srli_epi32(words, 5), _mm_set1_epi32(0x07E0));
    const Lanes blue = _mm_and_si128(_mm_srli_epi32(words, 3), _mm_set1_epi32(0x001F));
    const Lanes pixels = _mm_or_si128(_mm_or_si128(red, green), blue);
    return _mm_srai_epi32(_mm_slli_epi32(pixels, 16), 16);
}

} // namespace

int PackFours565(const std::uint32_t* words, int size, int doubled, std::uint8_t* row) {
    const Lanes shift = _mm_cvtsi32_si128(doubled);
    int x = 0;
    for (; x + 8 <= size; x += 8) {
        const Lanes low = Pack565(_mm_sll_epi32(LoadWords(words + x), shift));
        const Lanes high = Pack565(_mm_sll_epi32(LoadWords(words + x + 4), shift));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(row + sizeof(std::uint16_t) * static_cast<std::size_t>(x)),
                         _mm_packs_epi32(low, high));
    }
    return x;
}

void AverageColumns(const std::uint16_t* sums, const Axis& columns, int rows, std::uint32_t* words) {
    // Counts are `most` or one less; the last column then counts for nothing, so that nothing branches on it.
    const int most = columns.MaxCount();
    const auto factorFor = [rows](int count) {
        const int all = std::max(count, 1) * rows;
        return _mm_set1_epi16(static_cast<short>(65536 / all + 1));
    };
    const Lanes factors[2] = {factorFor(most), factorFor(most - 1)};
    const Lanes masks[2] = {_mm_set1_epi16(-1), _mm_setzero_si128()};
    const int size = columns.Size();
    for (int x = 0; x < size; ++x) {
        const auto* from = reinterpret_cast<const __m128i*>(sums + 4 * static_cast<std::ptrdiff_t>(columns[x].first));
        const auto load = [from](int i) {
            return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(reinterpret_cast<const char*>(from) + 8 * i));
        };
        const int fewer = most - columns[x].count;
        Lanes sum = _mm_and_si128(load(most - 1), masks[fewer]);
        for (int i = 0; i < most - 1; ++i) {
            sum = _mm_add_epi16(sum, load(i));
        }
        // At most 4 x 63 x count: exact while 252 x count x count stays below 2^16.
        const Lanes average = _mm_mulhi_epu16(_mm_slli_epi16(sum, 2), factors[fewer]);
        words[x] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(average, average)));
    }
}

} // namespace jpeg::sse2

#endif

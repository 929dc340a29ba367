#include "jpeg/Simd.h"

#if DMB_JPEG_SSE2

#include "jpeg/TransformPlain.h"
#include "jpeg/TransformSse2.h"

namespace jpeg::sse2 {

namespace {

using Lanes = __m128i;

Lanes Load(const std::int16_t* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

// value * constant >> 8, exact for every 16-bit value whose result fits: with constant = 256 whole + rest the product is
// whole * value + (rest * 256 * value >> 16). The sums may wrap on the way; they meet again in the result.
template <int kWhole, int kRest> Lanes Scale(Lanes value) {
    static_assert(kRest * 256 >= -32768 && kRest * 256 <= 32767);
    const Lanes part = _mm_mulhi_epi16(value, _mm_set1_epi16(static_cast<short>(kRest * 256)));
    if constexpr (kWhole == 1) {
        return _mm_add_epi16(value, part);
    } else if constexpr (kWhole == 2) {
        return _mm_add_epi16(_mm_add_epi16(value, value), part);
    } else {
        static_assert(kWhole == -3);
        return _mm_sub_epi16(part, _mm_add_epi16(_mm_add_epi16(value, value), value));
    }
}
Lanes Scale362(Lanes value) {
    return Scale<1, 106>(value);
}
Lanes Scale473(Lanes value) {
    return Scale<2, -39>(value);
}
Lanes Scale277(Lanes value) {
    return Scale<1, 21>(value);
}
Lanes ScaleMinus669(Lanes value) {
    return Scale<-3, 99>(value);
}

// One pass over eight lanes, in place.
[[gnu::always_inline]] inline void Butterfly(Lanes (&v)[8]) {
    const Lanes e0 = _mm_add_epi16(v[0], v[4]);
    const Lanes e1 = _mm_sub_epi16(v[0], v[4]);
    const Lanes e3 = _mm_add_epi16(v[2], v[6]);
    const Lanes e2 = _mm_sub_epi16(Scale362(_mm_sub_epi16(v[2], v[6])), e3);
    const Lanes even0 = _mm_add_epi16(e0, e3);
    const Lanes even3 = _mm_sub_epi16(e0, e3);
    const Lanes even1 = _mm_add_epi16(e1, e2);
    const Lanes even2 = _mm_sub_epi16(e1, e2);

    const Lanes z13 = _mm_add_epi16(v[5], v[3]);
    const Lanes z10 = _mm_sub_epi16(v[5], v[3]);
    const Lanes z11 = _mm_add_epi16(v[1], v[7]);
    const Lanes z12 = _mm_sub_epi16(v[1], v[7]);
    const Lanes odd7 = _mm_add_epi16(z11, z13);
    const Lanes z5 = Scale473(_mm_add_epi16(z10, z12));
    const Lanes odd6 = _mm_sub_epi16(_mm_add_epi16(ScaleMinus669(z10), z5), odd7);
    const Lanes odd5 = _mm_sub_epi16(Scale362(_mm_sub_epi16(z11, z13)), odd6);
    const Lanes odd4 = _mm_add_epi16(_mm_sub_epi16(Scale277(z12), z5), odd5);

    v[0] = _mm_add_epi16(even0, odd7);
    v[1] = _mm_add_epi16(even1, odd6);
    v[2] = _mm_add_epi16(even2, odd5);
    v[3] = _mm_sub_epi16(even3, odd4);
    v[4] = _mm_add_epi16(even3, odd4);
    v[5] = _mm_sub_epi16(even2, odd5);
    v[6] = _mm_sub_epi16(even1, odd6);
    v[7] = _mm_sub_epi16(even0, odd7);
}

// The same with the inputs 4..7 known to be 0.
[[gnu::always_inline]] inline void ButterflyLow(Lanes (&v)[8]) {
    const Lanes e2 = _mm_sub_epi16(Scale362(v[2]), v[2]);
    const Lanes even0 = _mm_add_epi16(v[0], v[2]);
    const Lanes even3 = _mm_sub_epi16(v[0], v[2]);
    const Lanes even1 = _mm_add_epi16(v[0], e2);
    const Lanes even2 = _mm_sub_epi16(v[0], e2);

    const Lanes z10 = _mm_sub_epi16(_mm_setzero_si128(), v[3]);
    const Lanes odd7 = _mm_add_epi16(v[1], v[3]);
    const Lanes difference = _mm_sub_epi16(v[1], v[3]);
    const Lanes z5 = Scale473(difference);
    const Lanes odd6 = _mm_sub_epi16(_mm_add_epi16(ScaleMinus669(z10), z5), odd7);
    const Lanes odd5 = _mm_sub_epi16(Scale362(difference), odd6);
    const Lanes odd4 = _mm_add_epi16(_mm_sub_epi16(Scale277(v[1]), z5), odd5);

    v[0] = _mm_add_epi16(even0, odd7);
    v[1] = _mm_add_epi16(even1, odd6);
    v[2] = _mm_add_epi16(even2, odd5);
    v[3] = _mm_sub_epi16(even3, odd4);
    v[4] = _mm_add_epi16(even3, odd4);
    v[5] = _mm_sub_epi16(even2, odd5);
    v[6] = _mm_sub_epi16(even1, odd6);
    v[7] = _mm_sub_epi16(even0, odd7);
}

[[gnu::always_inline]] inline void Transpose(Lanes (&v)[8]) {
    Lanes a[8];
    for (int i = 0; i < 4; ++i) {
        a[2 * i] = _mm_unpacklo_epi16(v[i], v[i + 4]);
        a[2 * i + 1] = _mm_unpackhi_epi16(v[i], v[i + 4]);
    }
    Lanes b[8];
    for (int i = 0; i < 4; ++i) {
        b[2 * i] = _mm_unpacklo_epi16(a[i], a[i + 4]);
        b[2 * i + 1] = _mm_unpackhi_epi16(a[i], a[i + 4]);
    }
    for (int i = 0; i < 4; ++i) {
        v[2 * i] = _mm_unpacklo_epi16(b[i], b[i + 4]);
        v[2 * i + 1] = _mm_unpackhi_epi16(b[i], b[i + 4]);
    }
}

// The same with the columns 4..7 known to be 0; leaves the rows 4..7 unset.
[[gnu::always_inline]] inline void TransposeLow(Lanes (&v)[8]) {
    const Lanes a0 = _mm_unpacklo_epi16(v[0], v[4]);
    const Lanes a1 = _mm_unpacklo_epi16(v[1], v[5]);
    const Lanes a2 = _mm_unpacklo_epi16(v[2], v[6]);
    const Lanes a3 = _mm_unpacklo_epi16(v[3], v[7]);
    const Lanes even01 = _mm_unpacklo_epi16(a0, a2);
    const Lanes even23 = _mm_unpackhi_epi16(a0, a2);
    const Lanes odd01 = _mm_unpacklo_epi16(a1, a3);
    const Lanes odd23 = _mm_unpackhi_epi16(a1, a3);
    v[0] = _mm_unpacklo_epi16(even01, odd01);
    v[1] = _mm_unpackhi_epi16(even01, odd01);
    v[2] = _mm_unpacklo_epi16(even23, odd23);
    v[3] = _mm_unpackhi_epi16(even23, odd23);
}

// Whether no value on the way can leave 16 bits: the sum of |coefficient| * weight stays below a limit that leaves room
// for the truncations.
class Bound {
public:
    void Add(Lanes values, Lanes weights) {
        const Lanes negative = _mm_subs_epi16(_mm_setzero_si128(), values);
        // A larger coefficient fails on its own, as no weight is below 4.
        const Lanes size = _mm_min_epi16(_mm_max_epi16(values, negative), _mm_set1_epi16(8200));
        sum = _mm_add_epi32(sum, _mm_madd_epi16(size, weights));
    }
    [[nodiscard]] bool Holds() const {
        // Each lane holds less than 2^31, but four of them may not.
        const Lanes halves = _mm_srli_epi32(sum, 2);
        const Lanes pairs = _mm_add_epi32(halves, _mm_shuffle_epi32(halves, 0x4E));
        const Lanes all = _mm_add_epi32(pairs, _mm_shuffle_epi32(pairs, 0xB1));
        return _mm_cvtsi128_si32(all) < kLimit / 4;
    }

private:
    static constexpr int kLimit = 32000;
    Lanes sum = _mm_setzero_si128();
};

// Bytes of eight columns, two to a vector, to eight rows.
void StoreColumns(Lanes c01, Lanes c23, Lanes c45, Lanes c67, std::uint8_t* samples, std::ptrdiff_t stride) {
    const auto interleave = [](Lanes v) { return _mm_unpacklo_epi8(v, _mm_srli_si128(v, 8)); };
    const Lanes a = interleave(c01); // c0 c1 of rows 0..7
    const Lanes b = interleave(c23);
    const Lanes c = interleave(c45);
    const Lanes d = interleave(c67);
    const Lanes lowAb = _mm_unpacklo_epi16(a, b); // c0..c3 of rows 0..3
    const Lanes highAb = _mm_unpackhi_epi16(a, b);
    const Lanes lowCd = _mm_unpacklo_epi16(c, d);
    const Lanes highCd = _mm_unpackhi_epi16(c, d);
    const Lanes rows[4] = {_mm_unpacklo_epi32(lowAb, lowCd), _mm_unpackhi_epi32(lowAb, lowCd),
                           _mm_unpacklo_epi32(highAb, highCd), _mm_unpackhi_epi32(highAb, highCd)};
    for (const Lanes& pair : rows) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(samples), pair);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(samples + stride), _mm_srli_si128(pair, 8));
        samples += 2 * stride;
    }
}

// The descaling shift, the limits and the level shift: signed saturation does the first two.
Lanes PackSamples(Lanes a, Lanes b) {
    return _mm_xor_si128(_mm_packs_epi16(_mm_srai_epi16(a, 5), _mm_srai_epi16(b, 5)), _mm_set1_epi8(-128));
}

// (a + b) >> 1 without leaving 16 bits.
Lanes AverageDown(Lanes a, Lanes b) {
    return _mm_add_epi16(_mm_and_si128(a, b), _mm_srai_epi16(_mm_xor_si128(a, b), 1));
}

} // namespace

void TransformFull(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                   std::ptrdiff_t stride) {
    if (last == 0) {
        plain::TransformFull(values, dequantiser, 0, samples, stride);
        return;
    }
    // The first ten coefficients lie in the upper left quarter.
    const bool isLow = last < 10;
    const int rows = isLow ? 4 : 8;
    Bound bound;
    Lanes v[8];
    for (int row = 0; row < rows; ++row) {
        const Lanes in = Load(values + row * 8);
        bound.Add(in, Load(dequantiser.weight.data() + row * 8));
        v[row] = _mm_mullo_epi16(in, Load(dequantiser.lane.data() + row * 8));
    }
    if (!bound.Holds()) [[unlikely]] {
        plain::TransformFull(values, dequantiser, last, samples, stride);
        return;
    }
    if (isLow) {
        ButterflyLow(v);
        TransposeLow(v);
        ButterflyLow(v);
    } else {
        Butterfly(v);
        Transpose(v);
        Butterfly(v);
    }
    StoreColumns(PackSamples(v[0], v[1]), PackSamples(v[2], v[3]), PackSamples(v[4], v[5]), PackSamples(v[6], v[7]),
                 samples, stride);
}

void TransformHalf(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                   std::ptrdiff_t stride) {
    if (last == 0) {
        plain::TransformHalf(values, dequantiser, 0, samples, stride);
        return;
    }
    Bound bound;
    Lanes v[8];
    for (int pair = 0; pair < 2; ++pair) { // two rows of four lie side by side
        const Lanes in = Load(values + pair * 8);
        bound.Add(in, Load(dequantiser.weight.data() + pair * 8));
        const Lanes rows = _mm_mullo_epi16(in, Load(dequantiser.lane.data() + pair * 8));
        v[2 * pair] = rows;
        v[2 * pair + 1] = _mm_srli_si128(rows, 8);
    }
    if (!bound.Holds()) [[unlikely]] {
        plain::TransformHalf(values, dequantiser, last, samples, stride);
        return;
    }
    ButterflyLow(v);
    const Lanes row01 = _mm_unpacklo_epi16(AverageDown(v[0], v[1]), AverageDown(v[2], v[3]));
    const Lanes row23 = _mm_unpacklo_epi16(AverageDown(v[4], v[5]), AverageDown(v[6], v[7]));
    // row01: r0c0 r1c0 r0c1 r1c1 ...; pairs of 32 bits complete the transpose.
    const Lanes columns01 = _mm_unpacklo_epi32(row01, row23);
    const Lanes columns23 = _mm_unpackhi_epi32(row01, row23);
    v[0] = columns01;
    v[1] = _mm_srli_si128(columns01, 8);
    v[2] = columns23;
    v[3] = _mm_srli_si128(columns23, 8);
    ButterflyLow(v);
    const Lanes a = _mm_unpacklo_epi16(AverageDown(v[0], v[1]), AverageDown(v[2], v[3])); // lanes: rows
    const Lanes b = _mm_unpacklo_epi16(AverageDown(v[4], v[5]), AverageDown(v[6], v[7]));
    const Lanes bytes = PackSamples(_mm_unpacklo_epi32(a, b), _mm_unpackhi_epi32(a, b));
    alignas(16) std::uint8_t out[16];
    _mm_store_si128(reinterpret_cast<__m128i*>(out), bytes);
    for (int row = 0; row < 4; ++row) {
        __builtin_memcpy(samples + row * stride, out + 4 * row, 4);
    }
}

namespace {

// Products of 32-bit lanes with the constants, by shifts; they wrap as the portable ones do.
Lanes Wide362(Lanes v) {
    const Lanes high = _mm_add_epi32(_mm_slli_epi32(v, 8), _mm_slli_epi32(v, 6));
    const Lanes low = _mm_add_epi32(_mm_slli_epi32(v, 3), _mm_slli_epi32(v, 1));
    return _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(high, low), _mm_slli_epi32(v, 5)), 8);
}
Lanes Wide473(Lanes v) {
    const Lanes high = _mm_sub_epi32(_mm_slli_epi32(v, 9), _mm_slli_epi32(v, 5));
    return _mm_srai_epi32(_mm_add_epi32(_mm_sub_epi32(high, _mm_slli_epi32(v, 3)), v), 8);
}

// Four values of 16 bits in lanes of 32, the upper halves 0.
Lanes LoadFour(const std::int16_t* at) {
    return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(at)), _mm_setzero_si128());
}

} // namespace

void TransformQuarter(const std::int16_t* values, const Dequantiser& dequantiser, int /*last*/, std::uint8_t* samples,
                      std::ptrdiff_t stride) {
    // Column pass: lanes 0 and 1 are the columns, inputs 1 come from lanes 2 and 3.
    const Lanes dc = _mm_madd_epi16(LoadFour(values), LoadFour(dequantiser.lane.data()));
    const Lanes ac = _mm_shuffle_epi32(dc, 0x0E);
    const Lanes odd6 = _mm_sub_epi32(Wide473(ac), ac);
    const Lanes odd5 = _mm_sub_epi32(Wide362(ac), odd6);
    const Lanes top = _mm_add_epi32(_mm_add_epi32(dc, odd6), _mm_add_epi32(dc, odd5));
    const Lanes bottom = _mm_add_epi32(_mm_sub_epi32(dc, odd5), _mm_sub_epi32(dc, odd6));
    const Lanes rows = _mm_srai_epi32(_mm_unpacklo_epi64(top, bottom), 1);

    // Row pass: lanes 0 and 2 make the left samples, 1 and 3 the right ones, where the odd part counts negative.
    const Lanes rowDc = _mm_shuffle_epi32(rows, 0xA0);
    const Lanes rowAc = _mm_shuffle_epi32(rows, 0xF5);
    const Lanes sign = _mm_set_epi32(-1, 0, -1, 0);
    const auto signedOf = [sign](Lanes v) { return _mm_sub_epi32(_mm_xor_si128(v, sign), sign); };
    const Lanes rowOdd6 = _mm_sub_epi32(Wide473(rowAc), rowAc);
    const Lanes rowOdd5 = _mm_sub_epi32(Wide362(rowAc), rowOdd6);
    const Lanes a = _mm_srai_epi32(_mm_add_epi32(rowDc, signedOf(rowOdd6)), 5);
    const Lanes b = _mm_srai_epi32(_mm_add_epi32(rowDc, signedOf(rowOdd5)), 5);
    // The limits first, then the averages.
    const Lanes wide = _mm_packs_epi32(a, b);
    const Lanes limited = _mm_max_epi16(_mm_min_epi16(wide, _mm_set1_epi16(127)), _mm_set1_epi16(-128));
    const Lanes average = _mm_srai_epi16(_mm_add_epi16(limited, _mm_srli_si128(limited, 8)), 1);
    const auto bytes = static_cast<std::uint32_t>(
        _mm_cvtsi128_si32(_mm_xor_si128(_mm_packs_epi16(average, average), _mm_set1_epi8(-128))));
    samples[0] = static_cast<std::uint8_t>(bytes);
    samples[1] = static_cast<std::uint8_t>(bytes >> 8);
    samples[stride] = static_cast<std::uint8_t>(bytes >> 16);
    samples[stride + 1] = static_cast<std::uint8_t>(bytes >> 24);
}

} // namespace jpeg::sse2

#endif

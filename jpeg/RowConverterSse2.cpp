#include "jpeg/RowConverterSse2.h"

#if DMB_JPEG_SSE2

#include <array>
#include <cstring>

namespace jpeg::sse2 {

namespace {

using Lanes = __m128i;

constexpr int kStep = 16; // pixels

// What eight chroma pairs add to luma, in 16-bit lanes.
struct ChromaTerms {
    Lanes r;
    Lanes g;
    Lanes b;
};

// `cb` and `cr` are 16-bit lanes, already centred. The table entries without their whole steps (c for red, 2c for blue,
// -cr for green) are products of 16 bits; the offsets 5 and -11 stand for the rounding half and are exact for every one
// of the 256 values.
[[gnu::always_inline]] inline ChromaTerms TermsOf(Lanes cb, Lanes cr) {
    const Lanes cr4 = _mm_slli_epi16(cr, 2);
    const Lanes cb5 = _mm_add_epi16(_mm_slli_epi16(cb, 2), cb);
    const Lanes redPart = _mm_mulhi_epi16(_mm_add_epi16(cr4, _mm_set1_epi16(5)), _mm_set1_epi16(6587));
    const Lanes bluePart = _mm_mulhi_epi16(_mm_add_epi16(cb5, _mm_set1_epi16(-11)), _mm_set1_epi16(-2988));

    const Lanes factors = _mm_set1_epi32(static_cast<int>(18734u << 16 | (static_cast<unsigned>(-22554) & 0xFFFFu)));
    const Lanes low = _mm_madd_epi16(_mm_unpacklo_epi16(cb, cr), factors);
    const Lanes high = _mm_madd_epi16(_mm_unpackhi_epi16(cb, cr), factors);
    // (sum + 32768) >> 16, the last bit of the shift in 16-bit lanes.
    const Lanes doubled = _mm_packs_epi32(_mm_srai_epi32(low, 15), _mm_srai_epi32(high, 15));
    const Lanes greenPart = _mm_srai_epi16(_mm_add_epi16(doubled, _mm_set1_epi16(1)), 1);
    return {_mm_add_epi16(cr, redPart), _mm_sub_epi16(greenPart, cr), _mm_add_epi16(_mm_add_epi16(cb, cb), bluePart)};
}

// Sixteen pixels, a byte each.
struct Sixteen {
    Lanes r;
    Lanes g;
    Lanes b;
};

Lanes AddLuma(Lanes y, Lanes low, Lanes high) {
    const Lanes zero = _mm_setzero_si128();
    return _mm_packus_epi16(_mm_add_epi16(_mm_unpacklo_epi8(y, zero), low),
                            _mm_add_epi16(_mm_unpackhi_epi8(y, zero), high));
}

Lanes LoadSixteen(const std::uint8_t* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

template <RowKind kKind> [[gnu::always_inline]] inline Sixteen Convert(const SampleRow& row, int x) {
    if constexpr (kKind == RowKind::kGrey) {
        const Lanes grey = LoadSixteen(row[0] + x);
        return {grey, grey, grey};
    }
    if constexpr (kKind == RowKind::kRgb) {
        return {LoadSixteen(row[0] + x), LoadSixteen(row[1] + x), LoadSixteen(row[2] + x)};
    }
    const Lanes zero = _mm_setzero_si128();
    const Lanes centre = _mm_set1_epi16(kChromaCentre);
    const Lanes y = LoadSixteen(row[0] + x);
    if constexpr (kKind == RowKind::kYccHalf) {
        const Lanes cb = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(row[1] + x / 2));
        const Lanes cr = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(row[2] + x / 2));
        const ChromaTerms t = TermsOf(_mm_sub_epi16(_mm_unpacklo_epi8(cb, zero), centre),
                                      _mm_sub_epi16(_mm_unpacklo_epi8(cr, zero), centre));
        return {AddLuma(y, _mm_unpacklo_epi16(t.r, t.r), _mm_unpackhi_epi16(t.r, t.r)),
                AddLuma(y, _mm_unpacklo_epi16(t.g, t.g), _mm_unpackhi_epi16(t.g, t.g)),
                AddLuma(y, _mm_unpacklo_epi16(t.b, t.b), _mm_unpackhi_epi16(t.b, t.b))};
    } else {
        const Lanes cb = LoadSixteen(row[1] + x);
        const Lanes cr = LoadSixteen(row[2] + x);
        const ChromaTerms low = TermsOf(_mm_sub_epi16(_mm_unpacklo_epi8(cb, zero), centre),
                                        _mm_sub_epi16(_mm_unpacklo_epi8(cr, zero), centre));
        const ChromaTerms high = TermsOf(_mm_sub_epi16(_mm_unpackhi_epi8(cb, zero), centre),
                                         _mm_sub_epi16(_mm_unpackhi_epi8(cr, zero), centre));
        return {AddLuma(y, low.r, high.r), AddLuma(y, low.g, high.g), AddLuma(y, low.b, high.b)};
    }
}

// Red and blue of a pixel share a 16-bit lane, green has one of its own.
Lanes Pack565(Lanes redBlue, Lanes green) {
    const Lanes red = _mm_and_si128(redBlue, _mm_set1_epi16(static_cast<short>(0xF800)));
    const Lanes blue = _mm_srli_epi16(_mm_and_si128(redBlue, _mm_set1_epi16(0x00F8)), 3);
    const Lanes middle = _mm_slli_epi16(_mm_and_si128(green, _mm_set1_epi16(0x00FC)), 3);
    return _mm_or_si128(_mm_or_si128(red, blue), middle);
}

template <RowKind kKind> void RowToRgb565(const SampleRow& row, int width, std::uint8_t* pixels) {
    const Lanes zero = _mm_setzero_si128();
    for (int x = 0; x < width; x += kStep, pixels += sizeof(std::uint16_t) * kStep) {
        const Sixteen p = Convert<kKind>(row, x);
        const Lanes low = Pack565(_mm_unpacklo_epi8(p.b, p.r), _mm_unpacklo_epi8(p.g, zero));
        const Lanes high = Pack565(_mm_unpackhi_epi8(p.b, p.r), _mm_unpackhi_epi8(p.g, zero));
        if (width - x < kStep) {
            const Lanes last[2] = {low, high};
            std::memcpy(pixels, last, sizeof(std::uint16_t) * static_cast<std::size_t>(width - x));
            return;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels) + 1, high);
    }
}

template <RowKind kKind, bool kAdd> void RowToContributions(const SampleRow& row, int width, std::uint32_t* words) {
    const Lanes zero = _mm_setzero_si128();
    const auto sixBits = [](Lanes v) { return _mm_and_si128(_mm_srli_epi16(v, 2), _mm_set1_epi8(0x3F)); };
    for (int x = 0; x < width; x += kStep) {
        const Sixteen p = Convert<kKind>(row, x);
        const Lanes r = sixBits(p.r);
        const Lanes g = sixBits(p.g);
        const Lanes b = sixBits(p.b);
        const Lanes lowBg = _mm_unpacklo_epi8(b, g);
        const Lanes highBg = _mm_unpackhi_epi8(b, g);
        const Lanes lowR = _mm_unpacklo_epi8(r, zero);
        const Lanes highR = _mm_unpackhi_epi8(r, zero);
        const Lanes four[4] = {_mm_unpacklo_epi16(lowBg, lowR), _mm_unpackhi_epi16(lowBg, lowR),
                               _mm_unpacklo_epi16(highBg, highR), _mm_unpackhi_epi16(highBg, highR)};
        auto* out = reinterpret_cast<__m128i*>(words + x);
        for (int i = 0; i < 4; ++i) {
            _mm_storeu_si128(out + i, kAdd ? _mm_add_epi32(_mm_loadu_si128(out + i), four[i]) : four[i]);
        }
    }
}

} // namespace

void ToRgb565(RowKind kind, const SampleRow& row, int width, std::uint8_t* pixels) {
    constexpr std::array kFunctions = {RowToRgb565<RowKind::kYcc>, RowToRgb565<RowKind::kYccHalf>,
                                       RowToRgb565<RowKind::kGrey>, RowToRgb565<RowKind::kRgb>};
    kFunctions[static_cast<std::size_t>(kind)](row, width, pixels);
}

void StoreContributions(RowKind kind, const SampleRow& row, int width, std::uint32_t* words) {
    constexpr std::array kFunctions = {
        RowToContributions<RowKind::kYcc, false>, RowToContributions<RowKind::kYccHalf, false>,
        RowToContributions<RowKind::kGrey, false>, RowToContributions<RowKind::kRgb, false>};
    kFunctions[static_cast<std::size_t>(kind)](row, width, words);
}

void AddContributions(RowKind kind, const SampleRow& row, int width, std::uint32_t* words) {
    constexpr std::array kFunctions = {
        RowToContributions<RowKind::kYcc, true>, RowToContributions<RowKind::kYccHalf, true>,
        RowToContributions<RowKind::kGrey, true>, RowToContributions<RowKind::kRgb, true>};
    kFunctions[static_cast<std::size_t>(kind)](row, width, words);
}

} // namespace jpeg::sse2

#endif

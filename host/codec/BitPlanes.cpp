#include "host/codec/BitPlanes.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <utility>

namespace codec {

void QuadSet::AddManyQuads(unsigned first, unsigned end) {
    for (unsigned w = first / 64; w * 64 < end; ++w) {
        const std::uint64_t from = w * 64 < first ? ~std::uint64_t{0} << (first - w * 64) : ~std::uint64_t{0};
        const std::uint64_t beyond = (w + 1) * 64 > end ? ~std::uint64_t{0} << (end - w * 64) : 0;
        SetWord(w, words[w] | (from & ~beyond));
    }
}

QuadSet QuadSet::All() {
    QuadSet set;
    set.AddLines(0, kBlockSamples);
    return set;
}

void BitPlanes::Reset(unsigned channelCount, const QuantisedLines* wantedLines) {
    channels = channelCount;
    wanted = wantedLines;
    for (auto& planes : pending) {
        for (QuadSet& set : planes)
            set.Clear();
    }
    openPlanes = 0;
    opened.Clear();
}

void BitPlanes::Open(int firstLine, int endLine, const std::array<std::uint8_t, kMaxChannels>& cbandSi) {
    Quad fresh;
    unsigned planes = 0;
    for (unsigned c = 0; c < channels; ++c) {
        const PlaneModel& model = kPlaneModels[cbandSi[c]];
        if (model.topPlane == 0)
            continue;
        fresh.row[c] = model.rows;
        pending[c][model.topPlane].AddLines(firstLine, endLine);
        planes |= 1U << model.topPlane;
    }
    if (planes == 0)
        return;
    openPlanes |= planes;
    opened.AddLines(firstLine, endLine);
    std::fill(quads.begin() + firstLine / 4, quads.begin() + endLine / 4, fresh);
}

int BitPlanes::Line(unsigned channel, unsigned line) const {
    const Quad& quad = quads[line / kQuadLines];
    const unsigned lane = kQuadLines * channel + line % kQuadLines;
    if (!opened.Contains(line / kQuadLines))
        return 0;
    const int magnitude = quad.magnitude[lane];
    return (quad.negative >> lane & 1) != 0 ? -magnitude : magnitude;
}

namespace {

constexpr int kFreeBudget = 14; // from here on p0 is not limited

// Tables 4.A.35 and 4.A.36: the fewer bits are left, the nearer to one half.
unsigned Limit(unsigned p0, int budget) {
    if (budget >= kFreeBudget)
        return p0;
    const unsigned least = 1U << (kFreeBudget - budget);
    return std::clamp(p0, least, kProbabilityScale - least);
}

// What all quads of a pass have in common.
template <class Coder> struct Pass {
    Coder coder;
    unsigned plane;
    const QuantisedLines* wanted;
};

// The bits of a plane for four lines, first line = bit 3, spread over the lanes of a channel.
constexpr std::array<std::uint64_t, 16> kSpread = [] {
    std::array<std::uint64_t, 16> spread{};
    for (unsigned bits = 0; bits < spread.size(); ++bits) {
        for (unsigned line = 0; line < kQuadLines; ++line)
            spread[bits] |= std::uint64_t{bits >> (kQuadLines - 1 - line) & 1} << (16 * line);
    }
    return spread;
}();
static_assert(std::endian::native == std::endian::little, "lane 0 is the lowest one of a number");

using Vector [[gnu::vector_size(sizeof(QuadLanes))]] = std::int16_t;

// Adds the bits that the plane has brought to the magnitudes.
[[gnu::always_inline]] inline Vector AddPlane(Quad& quad, unsigned plane, unsigned first, unsigned second) {
    using Halves [[gnu::vector_size(sizeof(QuadLanes))]] = std::uint64_t;
    const Halves bits = Halves{kSpread[first], kSpread[second]} << (plane - 1);
    const auto magnitude = std::bit_cast<Vector>(std::bit_cast<Halves>(quad.magnitude) | bits);
    quad.magnitude = std::bit_cast<QuadLanes>(magnitude);
    return magnitude;
}

// All lines of the channels that take part have got this plane: makes ready for the next one.
template <bool kFirst, bool kSecond>
[[gnu::always_inline]] inline void EndPlane(Quad& quad, unsigned plane, unsigned first, unsigned second) {
    constexpr auto kMost = static_cast<std::int16_t>(kLargestHigherBits);
    const Vector magnitude = AddPlane(quad, plane, first, second);
    const Vector bits = magnitude >> static_cast<int>(plane - 1);
    const Vector known = bits < kMost ? bits : kMost + Vector{};
    quad.history = std::bit_cast<QuadLanes>((known + static_cast<std::int16_t>(kContexts - 1)) & (magnitude != 0));
    const auto lower = [&quad](unsigned c, unsigned brought) {
        ++quad.row[c];
        quad.higher[c] = static_cast<std::uint8_t>(quad.higher[c] | brought);
    };
    if constexpr (kFirst)
        lower(0, first);
    if constexpr (kSecond)
        lower(1, second);
}

// Most planes of a quad whose lines are all 0 bring nothing but zeros. True: the plane was like that, and is done.
template <bool kFirst, bool kSecond>
[[gnu::always_inline]] inline bool TakeEmptyPlane(ArithmeticDecoder& coder, Quad& quad) {
    constexpr std::size_t kTaking = (kFirst ? 1 : 0) + (kSecond ? 1 : 0);
    std::array<unsigned, kTaking * kQuadLines> p0;
    for (std::size_t line = 0; line < kQuadLines; ++line) {
        if constexpr (kFirst)
            p0[line * kTaking] = (*quad.row[0])[kContextPosition[line]];
        if constexpr (kSecond)
            p0[line * kTaking + kTaking - 1] = (*quad.row[1])[kContextPosition[line]];
    }
    if (!coder.TakeZeros(p0))
        return false;
    if constexpr (kFirst)
        ++quad.row[0];
    if constexpr (kSecond)
        ++quad.row[1];
    return true;
}

// Codes the plane in the quad's lines, in the channels that take part; kResumes: from the pause on. False, with the place
// to go on in quad.pause, when the budget ended before the last one.
template <class Coder, bool kLimited, bool kFirst, bool kSecond, bool kResumes>
[[gnu::always_inline]] inline bool CodeQuad(Pass<Coder>& pass, Quad& quad, unsigned firstLine) {
    constexpr unsigned kStride = kFirst && kSecond ? 1 : 2;
    constexpr unsigned kLast = 2 * (kQuadLines - 1) + (kSecond ? 1 : 0);
    if constexpr (!Coder::kEncodes && !kResumes) {
        const bool empty =
            kFirst && kSecond ? std::bit_cast<std::uint16_t>(quad.higher) == 0 : quad.higher[kFirst ? 0 : 1] == 0;
        const bool unlimited = !kLimited || pass.coder.Budget() >= kFreeBudget + 32;
        if (empty && unlimited && TakeEmptyPlane<kFirst, kSecond>(pass.coder, quad))
            return true;
    }
    const unsigned start = kResumes ? quad.pause / 2 : 0;
    bool due = kResumes && quad.pause % 2 != 0;
    std::array<unsigned, kMaxChannels> current{};
    if constexpr (kResumes)
        current = {quad.current[0], quad.current[1]};
    const std::array<const std::uint8_t*, kMaxChannels> contexts{kSpectralContext[quad.higher[0]],
                                                                 kSpectralContext[quad.higher[1]]};
    const std::array<const PlaneRow*, kMaxChannels> row = quad.row;
    unsigned negative = quad.negative;
    const auto stop = [&](unsigned next, bool signDue) {
        quad.negative = static_cast<std::uint8_t>(negative);
        quad.pause = static_cast<std::uint8_t>(2 * next + (signDue ? 1 : 0));
        quad.current = {static_cast<std::uint8_t>(current[0]), static_cast<std::uint8_t>(current[1])};
        // The first channel has its bit in every other place from 0 on, the second one from 1 on.
        const unsigned coded = next + (signDue ? 1 : 0);
        AddPlane(quad, pass.plane, current[0] << (kQuadLines - (coded + 1) / 2),
                 current[1] << (kQuadLines - coded / 2));
    };
#pragma GCC unroll 8
    for (unsigned element = kFirst ? 0 : 1; element <= kLast; element += kStride) {
        if (kResumes && element < start)
            continue;
        const unsigned c = element & 1;
        const unsigned line = element >> 1;
        const unsigned lane = kQuadLines * c + line;
        const unsigned history = quad.history[lane];
        const int wanted = Coder::kEncodes ? (*pass.wanted)[c][firstLine + line] : 0;
        unsigned bit = 1;
        if (!kResumes || !due) {
            const unsigned context = contexts[c][(1U << line) - 1 + current[c]];
            unsigned p0 = (*row[c])[context + history];
            if constexpr (kLimited)
                p0 = Limit(p0, pass.coder.Budget());
            unsigned wantedBit = 0;
            if constexpr (Coder::kEncodes) {
                wantedBit = static_cast<unsigned>(std::abs(wanted)) >> (pass.plane - 1) & 1;
                if (history == 0 && pass.coder.NearEnd())
                    wantedBit = 0;
            }
            bit = pass.coder.Bit(p0, wantedBit);
            current[c] = current[c] << 1 | bit;
        }
        if constexpr (!Coder::kEncodes && !kResumes) {
            if (pass.coder.Ample()) [[likely]] {
                // Signs come too seldom and too irregularly for a branch.
                if (history == 0)
                    negative |= pass.coder.EvenBitIf(bit) << lane;
                continue;
            }
        }
        if (history < bit) { // the line's first 1
            if (pass.coder.Spent()) {
                stop(element, true);
                return false;
            }
            negative |= pass.coder.EvenBit(wanted < 0 ? 1 : 0) << lane;
            due = false;
        }
        if (element != kLast && pass.coder.Spent()) {
            stop(element + kStride, false);
            return false;
        }
    }
    if constexpr (kResumes)
        quad.pause = 0;
    quad.negative = static_cast<std::uint8_t>(negative);
    EndPlane<kFirst, kSecond>(quad, pass.plane, current[0], current[1]);
    return true;
}

// Few quads are resumed, so that need not be fast.
template <class Coder, bool kLimited>
[[gnu::noinline]] bool ResumeQuad(Pass<Coder>& pass, Quad& quad, unsigned firstLine, bool first, bool second) {
    if (first && second)
        return CodeQuad<Coder, kLimited, true, true, true>(pass, quad, firstLine);
    return first ? CodeQuad<Coder, kLimited, true, false, true>(pass, quad, firstLine)
                 : CodeQuad<Coder, kLimited, false, true, true>(pass, quad, firstLine);
}

// The same pointer, of which the compiler forgets where it comes from: it would keep one for each member otherwise, and the
// registers are needed.
[[gnu::always_inline]] inline Quad* Opaque(Quad* quad) {
    asm("" : "+r"(quad));
    return quad;
}

template <class Coder, bool kLimited>
[[gnu::always_inline]] inline bool CodeQuadAsItIs(Pass<Coder>& pass, Quad& quad, unsigned firstLine, bool first,
                                                  bool second) {
    if (quad.pause != 0) [[unlikely]] {
        Pass<Coder> copy = std::move(pass); // its address goes to a function, that of `pass` must not
        const bool complete = ResumeQuad<Coder, kLimited>(copy, quad, firstLine, first, second);
        pass = std::move(copy);
        return complete;
    }
    if (first && second)
        return CodeQuad<Coder, kLimited, true, true, false>(pass, quad, firstLine);
    return first ? CodeQuad<Coder, kLimited, true, false, false>(pass, quad, firstLine)
                 : CodeQuad<Coder, kLimited, false, true, false>(pass, quad, firstLine);
}

} // namespace

template <class Coder, bool kLimited>
[[gnu::always_inline]] inline void BitPlanes::CodePlanes(Coder& coder, const QuadSet& set, unsigned lowest) {
    // A copy that nothing else points to can stay in registers.
    Pass<Coder> pass{std::move(coder), kLargestPlane, wanted};
    bool spent = pass.coder.Spent();
    while (!spent) {
        // The highest plane at or below this one that any quad is at.
        const unsigned open = openPlanes & ((2U << pass.plane) - 1) & (~0U << lowest);
        if (open == 0)
            break;
        pass.plane = static_cast<unsigned>(std::bit_width(open)) - 1;
        QuadSet& first = pending[0][pass.plane];
        QuadSet& second = pending[1][pass.plane];
        QuadSet& firstBelow = pending[0][pass.plane - 1];
        QuadSet& secondBelow = pending[1][pass.plane - 1];
        unsigned occupied = (first.Occupied() | second.Occupied()) & set.Occupied();
        for (; occupied != 0 && !spent; occupied &= occupied - 1) {
            const auto w = static_cast<unsigned>(std::countr_zero(occupied));
            const std::uint64_t inFirst = first.Word(w);
            const std::uint64_t inSecond = second.Word(w);
            std::uint64_t left = (inFirst | inSecond) & set.Word(w);
            std::uint64_t done = left;
            while (left != 0 && !spent) {
                const std::uint64_t one = left & (0 - left);
                pass.coder.FillUp();
                const unsigned index = w * 64 + static_cast<unsigned>(std::countr_zero(left));
                if (!CodeQuadAsItIs<Coder, kLimited>(pass, *Opaque(&quads[index]), index * kQuadLines,
                                                     (inFirst & one) != 0, (inSecond & one) != 0)) {
                    spent = true;
                    break;
                }
                left ^= one;
                spent = pass.coder.Spent();
            }
            done ^= left;
            first.SetWord(w, inFirst & ~done);
            second.SetWord(w, inSecond & ~done);
            firstBelow.SetWord(w, firstBelow.Word(w) | (inFirst & done));
            secondBelow.SetWord(w, secondBelow.Word(w) | (inSecond & done));
        }
        openPlanes &= ~((first.Occupied() | second.Occupied()) == 0 ? 1U << pass.plane : 0U);
        openPlanes |= (firstBelow.Occupied() | secondBelow.Occupied()) != 0 ? 1U << (pass.plane - 1) & ~1U : 0U;
        --pass.plane;
    }
    coder = std::move(pass.coder);
}

template <class Coder, bool kLimited>
void BitPlanes::CodePlanesPlain(Coder& coder, const QuadSet& set, unsigned lowest) {
    CodePlanes<Coder, kLimited>(coder, set, lowest);
}

#if defined(__x86_64__)
// Counting leading zeros is part of every bit's way to the next one; on some processors the plain instruction takes
// longer than all the rest. This is the same code with the newer ones.
template <class Coder, bool kLimited>
[[gnu::target("lzcnt,bmi,bmi2")]] void BitPlanes::CodePlanesFast(Coder& coder, const QuadSet& set, unsigned lowest) {
    CodePlanes<Coder, kLimited>(coder, set, lowest);
}
#endif

template <class Coder> void BitPlanes::Code(Coder& coder, const QuadSet& set, unsigned lowest, bool limited) {
    if (openPlanes >> lowest == 0 || coder.Budget() <= 0)
        return;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("bmi2")) { // all processors with these have lzcnt
        if (limited)
            CodePlanesFast<Coder, true>(coder, set, lowest);
        else
            CodePlanesFast<Coder, false>(coder, set, lowest);
        return;
    }
#endif
    if (limited)
        CodePlanesPlain<Coder, true>(coder, set, lowest);
    else
        CodePlanesPlain<Coder, false>(coder, set, lowest);
}

template void BitPlanes::Code(ArithmeticDecoder&, const QuadSet&, unsigned, bool);
template void BitPlanes::Code(ArithmeticEncoder&, const QuadSet&, unsigned, bool);

} // namespace codec

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

namespace {
constexpr QuadSet kAllQuads = QuadSet::All();
}

void BitPlanes::Reset(unsigned channelCount, const QuantisedLines* wantedLines) {
    channels = channelCount;
    wanted = wantedLines;
    fronts.fill({});
    openPlanes = 0;
    opened.Clear();
}

unsigned BitPlanes::Open(int firstLine, int endLine, const std::array<std::uint8_t, kMaxChannels>& cbandSi) {
    const unsigned word = static_cast<unsigned>(firstLine) / kQuadLines / 64; // no coding band lies in two
    const std::uint64_t lines = QuadSet::Mask(firstLine, endLine);
    std::array<const PlaneRow*, kMaxChannels> row{};
    unsigned planes = 0;
    for (unsigned c = 0; c < channels; ++c) {
        const PlaneModel& model = kPlaneModels[cbandSi[c]];
        if (model.topPlane == 0)
            continue;
        row[c] = model.rows;
        Front& front = fronts[model.topPlane];
        front.quads[word][c] |= lines;
        front.occupied |= 1U << word;
        planes |= 1U << model.topPlane;
    }
    if (planes == 0)
        return 0;
    openPlanes |= planes;
    opened.AddLines(firstLine, endLine);
    for (auto quad = static_cast<unsigned>(firstLine) / kQuadLines; quad < static_cast<unsigned>(endLine) / kQuadLines;
         ++quad)
        quads[quad] = Quad{.row = row};
    return static_cast<unsigned>(std::bit_width(planes)) - 1;
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
    bool limited;
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
[[gnu::always_inline]] inline void EndPlane(Quad& quad, unsigned plane, unsigned first, unsigned second, bool inFirst,
                                            bool inSecond) {
    constexpr auto kMost = static_cast<std::int16_t>(kLargestHigherBits);
    const Vector magnitude = AddPlane(quad, plane, first, second);
    const Vector bits = magnitude >> static_cast<int>(plane - 1);
    const Vector known = bits < kMost ? bits : kMost + Vector{};
    quad.history = std::bit_cast<QuadLanes>((known + static_cast<std::int16_t>(kContexts - 1)) & (magnitude != 0));
    const auto lower = [&quad](unsigned c, unsigned brought) {
        ++quad.row[c];
        quad.higher[c] = static_cast<std::uint8_t>(quad.higher[c] | brought);
    };
    if (inFirst)
        lower(0, first);
    if (inSecond)
        lower(1, second);
}

// Most planes of a quad whose lines are all 0 bring nothing but zeros. True: the plane was like that, and is done.
template <bool kFirst, bool kSecond>
[[gnu::always_inline]] inline bool TakeEmptyPlane(ArithmeticDecoder& coder, Quad& quad) {
    constexpr std::size_t kTaking = (kFirst ? 1 : 0) + (kSecond ? 1 : 0);
    std::array<unsigned, kTaking * kQuadLines> p0;
    for (std::size_t line = 0; line < kQuadLines; ++line) {
        if constexpr (kFirst)
            p0[line * kTaking] = quad.row[0]->p0[kContextPosition[line]];
        if constexpr (kSecond)
            p0[line * kTaking + kTaking - 1] = quad.row[1]->p0[kContextPosition[line]];
    }
    const std::uint64_t product = std::uint64_t{kFirst ? quad.row[0]->zeros : 1} * (kSecond ? quad.row[1]->zeros : 1);
    if (!coder.TakeZeros<kPlaneScale>(p0, product))
        return false;
    if constexpr (kFirst)
        ++quad.row[0];
    if constexpr (kSecond)
        ++quad.row[1];
    return true;
}

// Decodes the plane in the quad's lines, in the channels that take part, as long as the decoder has ample bits. False: it has
// not, and FinishQuad is to go on at quad.pause.
template <bool kFirst, bool kSecond>
[[gnu::always_inline]] inline bool DecodeQuad(ArithmeticDecoder& coder, Quad& quad, unsigned plane) {
    constexpr unsigned kStride = kFirst && kSecond ? 1 : 2;
    constexpr unsigned kLast = 2 * (kQuadLines - 1) + (kSecond ? 1 : 0);
    const bool empty =
        kFirst && kSecond ? std::bit_cast<std::uint16_t>(quad.higher) == 0 : quad.higher[kFirst ? 0 : 1] == 0;
    if (empty && TakeEmptyPlane<kFirst, kSecond>(coder, quad))
        return true;
    // On the stack they need no registers for their addresses.
    std::array<ContextTree, kMaxChannels> contexts;
    if constexpr (kFirst)
        contexts[0] = kSpectralContext[quad.higher[0]];
    if constexpr (kSecond)
        contexts[1] = kSpectralContext[quad.higher[1]];
    const std::array<const PlaneRow*, kMaxChannels> row = quad.row;
    std::array<std::size_t, kMaxChannels> node{};
    unsigned negative = quad.negative;
#pragma GCC unroll 8
    for (unsigned element = kFirst ? 0 : 1; element <= kLast; element += kStride) {
        const unsigned c = element & 1;
        const unsigned lane = kQuadLines * c + (element >> 1);
        const unsigned history = quad.history[lane];
        const unsigned context = element < 2 ? kSpectralContext[quad.higher[c]][0]
                                             : contexts[c][node[c]]; // the first ones have not got there yet
        const unsigned bit = coder.Bit<kPlaneScale>(row[c]->p0[context + history]);
        node[c] = 2 * node[c] + 1 + bit;
        const auto handOver = [&](unsigned pause) {
            quad.node = {static_cast<std::uint8_t>(node[0]), static_cast<std::uint8_t>(node[1])};
            quad.negative = static_cast<std::uint8_t>(negative);
            quad.pause = static_cast<std::uint8_t>(pause);
            return false;
        };
        if ((history == 0 || element != kLast) && !coder.Ample()) [[unlikely]]
            return handOver(history < bit ? 2 * element + 1 : 2 * (element + kStride));
        if (history != 0)
            continue;
        // A sign is due too irregularly for a branch.
        coder.EvenBitIf(bit, 1U << lane, negative);
        if (element != kLast && !coder.Ample()) [[unlikely]]
            return handOver(2 * (element + kStride));
    }
    quad.negative = static_cast<std::uint8_t>(negative);
    EndPlane(quad, plane, kFirst ? static_cast<unsigned>(node[0]) - kContextLeaves : 0,
             kSecond ? static_cast<unsigned>(node[1]) - kContextLeaves : 0, kFirst, kSecond);
    return true;
}

// Codes what is left of the plane in the quad's lines, as CodeQuad does. Few quads come here, each with another rest, so this is
// short rather than fast.
template <class Coder>
[[gnu::always_inline]] inline bool FinishQuad(Pass<Coder>& pass, Quad& quad, unsigned firstLine, bool first,
                                              bool second) {
    const unsigned stride = first && second ? 1 : 2;
    const unsigned last = 2 * (kQuadLines - 1) + (second ? 1 : 0);
    Coder coder = std::move(pass.coder); // as in CodePlanes
    std::array<unsigned, kMaxChannels> node{quad.node[0], quad.node[1]};
    unsigned negative = quad.negative;
    bool signDue = quad.pause % 2 != 0;
    unsigned element = std::max(quad.pause / 2U, first ? 0U : 1U);
    for (; element <= last && !coder.Spent(); element += stride) {
        const unsigned c = element & 1;
        const unsigned line = element >> 1;
        const unsigned lane = kQuadLines * c + line;
        const int wanted = Coder::kEncodes ? (*pass.wanted)[c][firstLine + line] : 0;
        if (!signDue) {
            const unsigned history = quad.history[lane];
            unsigned wantedBit = 0;
            if constexpr (Coder::kEncodes) {
                wantedBit = static_cast<unsigned>(std::abs(wanted)) >> (pass.plane - 1) & 1;
                if (history == 0 && coder.NearEnd())
                    wantedBit = 0;
            }
            const unsigned p0 = quad.row[c]->p0[kSpectralContext[quad.higher[c]][node[c]] + history];
            const unsigned bit =
                pass.limited ? coder.Bit(Limit(p0 * (kProbabilityScale / kPlaneScale), coder.Budget()), wantedBit)
                             : coder.template Bit<kPlaneScale>(p0, wantedBit);
            node[c] = 2 * node[c] + 1 + bit;
            signDue = history < bit;
            if constexpr (!Coder::kEncodes) {
                if (coder.Ample()) { // as in DecodeQuad
                    coder.EvenBitIf(signDue ? 1 : 0, 1U << lane, negative);
                    signDue = false;
                    continue;
                }
            }
            if (signDue && coder.Spent())
                break;
        }
        if (signDue)
            negative |= coder.EvenBit(wanted < 0 ? 1 : 0) << lane;
        signDue = false;
    }
    pass.coder = std::move(coder);
    quad.negative = static_cast<std::uint8_t>(negative);
    if (element > last) {
        quad.node = {};
        quad.pause = 0;
        EndPlane(quad, pass.plane, first ? node[0] - kContextLeaves : 0, second ? node[1] - kContextLeaves : 0, first,
                 second);
        return true;
    }
    quad.node = {static_cast<std::uint8_t>(node[0]), static_cast<std::uint8_t>(node[1])};
    quad.pause = static_cast<std::uint8_t>(2 * element + (signDue ? 1 : 0));
    // The bits so far, first line = bit 3: a node has its level's bits, with a 1 in front, in its place + 1.
    const auto bits = [&node](unsigned c) {
        const unsigned path = node[c] + 1;
        const unsigned taken = static_cast<unsigned>(std::bit_width(path)) - 1;
        return (path ^ 1U << taken) << (kQuadLines - taken);
    };
    AddPlane(quad, pass.plane, bits(0), bits(1));
    return false;
}

// The same pointer, of which the compiler forgets where it comes from: it would keep one for each member otherwise, and the
// registers are needed.
[[gnu::always_inline]] inline Quad* Opaque(Quad* quad) {
    asm("" : "+r"(quad));
    return quad;
}

// Codes the plane in the quad's lines, in the channels that take part. False, with the place to go on in quad.pause, when the
// budget ended before the last one.
template <class Coder>
[[gnu::always_inline]] inline bool CodeQuad(Pass<Coder>& pass, Quad& quad, unsigned firstLine, bool first,
                                            bool second) {
    if constexpr (!Coder::kEncodes) {
        // What is ample costs less than 64 bits, so no p0 of them has a limit.
        const bool free = !pass.limited || pass.coder.Budget() >= kFreeBudget + 64;
        if (quad.pause == 0 && free) [[likely]] {
            const bool complete = first && second ? DecodeQuad<true, true>(pass.coder, quad, pass.plane)
                                  : first         ? DecodeQuad<true, false>(pass.coder, quad, pass.plane)
                                                  : DecodeQuad<false, true>(pass.coder, quad, pass.plane);
            if (complete)
                return true;
        }
    }
    return FinishQuad<Coder>(pass, quad, firstLine, first, second);
}

} // namespace

template <class Coder> [[gnu::always_inline]] inline void BitPlanes::CodePlanes(Coder& coder, const PlaneTask& task) {
    // A copy that nothing else points to can stay in registers.
    Pass<Coder> pass{std::move(coder), task.highest, task.limited, wanted};
    bool spent = pass.coder.Spent();
    const QuadSet* set = &task.quads;
    unsigned lowest = task.lowest;
    while (!spent) {
        // The highest plane at or below this one that any quad is at.
        const unsigned open = openPlanes & ((2U << pass.plane) - 1) & (~0U << lowest);
        if (open == 0) {
            if (!task.thenAll || set == &kAllQuads)
                break;
            set = &kAllQuads;
            lowest = 1;
            pass.plane = kLargestPlane;
            continue;
        }
        pass.plane = static_cast<unsigned>(std::bit_width(open)) - 1;
        Front& front = fronts[pass.plane];
        Front& below = fronts[pass.plane - 1];
        for (unsigned words = front.occupied & set->Occupied(); words != 0 && !spent; words &= words - 1) {
            const auto w = static_cast<unsigned>(std::countr_zero(words));
            const std::uint64_t inFirst = front.quads[w][0];
            const std::uint64_t inSecond = front.quads[w][1];
            const std::uint64_t wordSet = (inFirst | inSecond) & set->Word(w);
            std::uint64_t left = wordSet;
            while (left != 0) {
                const std::uint64_t one = left & (0 - left);
                pass.coder.FillUp();
                const unsigned index = w * 64 + static_cast<unsigned>(std::countr_zero(left));
                spent = !CodeQuad(pass, *Opaque(&quads[index]), index * kQuadLines, (inFirst & one) != 0,
                                  (inSecond & one) != 0);
                if (spent)
                    break;
                left ^= one;
                spent = pass.coder.Spent();
                if (spent)
                    break;
            }
            const std::uint64_t done = wordSet ^ left;
            front.quads[w][0] = inFirst & ~done;
            front.quads[w][1] = inSecond & ~done;
            front.occupied &= ~(((inFirst | inSecond) & ~done) == 0 ? 1U << w : 0U);
            below.quads[w][0] |= inFirst & done;
            below.quads[w][1] |= inSecond & done;
            below.occupied |= done != 0 ? 1U << w : 0U;
        }
        openPlanes &= ~(front.occupied == 0 ? 1U << pass.plane : 0U);
        openPlanes |= below.occupied != 0 ? 1U << (pass.plane - 1) & ~1U : 0U;
        --pass.plane;
    }
    coder = std::move(pass.coder);
}

template <class Coder> void BitPlanes::CodePlanesPlain(Coder& coder, const PlaneTask& task) {
    CodePlanes(coder, task);
}

#if defined(__x86_64__)
// Counting leading zeros is part of every bit's way to the next one; on some processors the plain instruction takes
// longer than all the rest. This is the same code with the newer ones.
template <class Coder>
[[gnu::target("lzcnt,bmi,bmi2")]] void BitPlanes::CodePlanesFast(Coder& coder, const PlaneTask& task) {
    CodePlanes(coder, task);
}
#endif

template <class Coder> void BitPlanes::Code(Coder& coder, const PlaneTask& task) {
    if (openPlanes == 0 || coder.Budget() <= 0)
        return;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("bmi2")) { // all processors with these have lzcnt
        CodePlanesFast(coder, task);
        return;
    }
#endif
    CodePlanesPlain(coder, task);
}

template void BitPlanes::Code(ArithmeticDecoder&, const PlaneTask&);
template void BitPlanes::Code(ArithmeticEncoder&, const PlaneTask&);

} // namespace codec

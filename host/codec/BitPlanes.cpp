#include "host/codec/BitPlanes.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <utility>

namespace codec {

void QuadSet::AddLines(int firstLine, int endLine) {
    for (int quad = firstLine / 4; quad < endLine / 4; ++quad)
        Insert(static_cast<unsigned>(quad));
}

QuadSet QuadSet::All() {
    QuadSet set;
    set.words.fill(~std::uint64_t{0});
    return set;
}

void BitPlanes::Reset(unsigned channelCount, const QuantisedLines* wantedLines) {
    channels = channelCount;
    wanted = wantedLines;
    for (QuadSet& set : pending)
        set.Clear();
    count.fill(0);
    openPlanes = 0;
    opened.Clear();
}

void BitPlanes::Open(unsigned quad, const std::array<std::uint8_t, kMaxChannels>& cbandSi) {
    unsigned top = 0;
    std::array<std::uint8_t, kMaxChannels> plane{};
    for (unsigned c = 0; c < channels; ++c) {
        plane[c] = kPlaneModels[cbandSi[c]].topPlane;
        top = std::max<unsigned>(top, plane[c]);
    }
    if (top == 0)
        return;
    Quad& q = quads[quad];
    q = Quad{};
    q.cbandSi = cbandSi;
    q.plane = plane;
    opened.Insert(quad);
    pending[top].Insert(quad);
    ++count[top];
    openPlanes |= 1U << top;
}

int BitPlanes::Line(unsigned channel, unsigned line) const {
    const Quad& quad = quads[line / kQuadLines];
    const unsigned element = 2 * (line % kQuadLines) + channel;
    if (!opened.Contains(line / kQuadLines))
        return 0;
    const int magnitude = quad.magnitude[element];
    return (quad.negative >> element & 1) != 0 ? -magnitude : magnitude;
}

// All lines of the quad have got this plane.
inline void BitPlanes::Lower(unsigned quad, unsigned plane) {
    Quad& q = quads[quad];
    unsigned top = 0;
    for (unsigned c = 0; c < kMaxChannels; ++c) {
        q.plane[c] = static_cast<std::uint8_t>(q.plane[c] - (q.plane[c] == plane ? 1 : 0));
        top = std::max<unsigned>(top, q.plane[c]);
    }
    pending[plane].Remove(quad);
    openPlanes &= ~(--count[plane] == 0 ? 1U << plane : 0U);
    pending[top].Insert(quad); // plane 0: complete
    ++count[top];
    openPlanes |= 1U << top & ~1U;
}

namespace {

// Tables 4.A.35 and 4.A.36: the fewer bits are left, the nearer to one half.
unsigned Limit(unsigned p0, int budget) {
    if (budget >= 14)
        return p0;
    const unsigned least = 1U << (14 - budget);
    return std::clamp(p0, least, kProbabilityScale - least);
}

// What all quads of a pass have in common.
template <class Coder> struct Pass {
    Coder coder;
    int budget;
    unsigned plane;
    const QuantisedLines* wanted;
};

// How one channel's lines of a quad are coded in one plane.
struct ChannelPass {
    const PlaneRow& row;
    const std::uint8_t* contexts;
    unsigned current; // as in Quad

    [[gnu::always_inline]] ChannelPass(Quad& quad, unsigned channel, unsigned plane, bool begins)
        : row(kPlaneModels[quad.cbandSi[channel]].Row(kPlaneModels[quad.cbandSi[channel]].topPlane - plane)) {
        if (begins) {
            quad.higher[channel] |= quad.current[channel];
            quad.current[channel] = 0;
        }
        contexts = kSpectralContext[quad.higher[channel]];
        current = quad.current[channel];
    }
};

// Codes the plane in one line of one channel. `due`: its bit is coded, only the sign is missing. False when the budget
// ended before the sign.
template <class Coder, bool kLimited>
[[gnu::always_inline]] inline bool CodeLine(Pass<Coder>& pass, ChannelPass& channel, std::uint16_t& magnitude,
                                            unsigned& negative, unsigned element, bool due, int wantedLine) {
    if (!due) [[likely]] {
        const unsigned before = magnitude;
        const unsigned context = channel.contexts[(1U << (element >> 1)) - 1 + channel.current];
        const unsigned history = kContexts - 1 + std::min<unsigned>(before >> pass.plane, kLargestHigherBits);
        const unsigned isZero = 0U - (before == 0 ? 1U : 0U);
        unsigned p0 = channel.row[(context & isZero) | (history & ~isZero)];
        if constexpr (kLimited)
            p0 = Limit(p0, pass.budget);
        unsigned wantedBit = 0;
        if constexpr (Coder::kEncodes) {
            wantedBit = static_cast<unsigned>(std::abs(wantedLine)) >> (pass.plane - 1) & 1;
            if (before == 0 && pass.coder.NearEnd())
                wantedBit = 0;
        }
        const unsigned bit = pass.coder.Bit(p0, pass.budget, wantedBit);
        channel.current = channel.current << 1 | bit;
        magnitude = static_cast<std::uint16_t>(before | bit << (pass.plane - 1));
        if ((bit & isZero) == 0)
            return true;
    }
    if (pass.budget <= 0)
        return false;
    negative |= pass.coder.EvenBit(pass.budget, wantedLine < 0 ? 1 : 0) << element;
    return true;
}

// Codes the plane in the quad's lines, in the channels that take part; kResumes: from quad.next on. False, with the place
// to go on in quad.next, when the budget ended before the last one.
template <class Coder, bool kLimited, bool kFirst, bool kSecond, bool kResumes>
[[gnu::always_inline]] inline bool CodeQuad(Pass<Coder>& pass, Quad& quad, unsigned firstLine) {
    constexpr unsigned kLast = 2 * (kQuadLines - 1) + (kSecond ? 1 : 0);
    const unsigned start = kResumes ? quad.next : 0;
    bool due = kResumes && quad.signDue;
    unsigned negative = quad.negative;
    // A channel that has nothing of this plane yet begins with it.
    std::array<ChannelPass, 2> channels{
        ChannelPass(quad, kFirst ? 0 : 1, pass.plane, start == 0 && !due),
        ChannelPass(quad, kSecond ? 1 : 0, pass.plane, kSecond && (start == 0 || (start == 1 && !due)))};
    const auto stop = [&](unsigned next, bool signDue) {
        quad.next = static_cast<std::uint8_t>(next);
        quad.signDue = signDue;
        quad.negative = static_cast<std::uint8_t>(negative);
        if constexpr (kFirst)
            quad.current[0] = static_cast<std::uint8_t>(channels[0].current);
        if constexpr (kSecond)
            quad.current[1] = static_cast<std::uint8_t>(channels[1].current);
    };
#pragma GCC unroll 8
    for (unsigned element = kFirst ? 0 : 1; element <= kLast; element += kFirst && kSecond ? 1 : 2) {
        if (kResumes && element < start)
            continue;
        const int wanted = Coder::kEncodes ? (*pass.wanted)[element & 1][firstLine + (element >> 1)] : 0;
        if (!CodeLine<Coder, kLimited>(pass, channels[element & 1], quad.magnitude[element], negative, element, due,
                                       wanted)) {
            stop(element, true);
            return false;
        }
        due = false;
        if (pass.budget <= 0 && element != kLast) {
            stop(element + 1, false);
            return false;
        }
    }
    stop(0, false);
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

} // namespace

template <class Coder, bool kLimited>
[[gnu::always_inline]] inline void BitPlanes::CodePlanes(Coder& coder, const QuadSet& set, unsigned lowest,
                                                         int& budget) {
    // A copy that nothing else points to can stay in registers.
    Pass<Coder> pass{std::move(coder), budget, kLargestPlane, wanted};
    for (;;) {
        // The highest plane at or below this one that any quad is at.
        const unsigned open = openPlanes & ((2U << pass.plane) - 1) & (~0U << lowest);
        if (open == 0 || pass.budget <= 0)
            break;
        pass.plane = static_cast<unsigned>(std::bit_width(open)) - 1;
        for (unsigned w = 0; w < QuadSet::kWords && pass.budget > 0; ++w) {
            std::uint64_t left = pending[pass.plane].Word(w) & set.Word(w);
            for (; left != 0 && pass.budget > 0; left &= left - 1) {
                const unsigned index = w * 64 + static_cast<unsigned>(std::countr_zero(left));
                Quad& quad = quads[index];
                const bool first = quad.plane[0] == pass.plane;
                const bool second = quad.plane[1] == pass.plane;
                bool complete = false;
                if (quad.next != 0 || quad.signDue) {
                    Pass<Coder> copy = std::move(pass); // its address goes to a function, that of `pass` must not
                    complete = ResumeQuad<Coder, kLimited>(copy, quad, index * kQuadLines, first, second);
                    pass = std::move(copy);
                } else if (first && second) {
                    complete = CodeQuad<Coder, kLimited, true, true, false>(pass, quad, index * kQuadLines);
                } else if (first) {
                    complete = CodeQuad<Coder, kLimited, true, false, false>(pass, quad, index * kQuadLines);
                } else {
                    complete = CodeQuad<Coder, kLimited, false, true, false>(pass, quad, index * kQuadLines);
                }
                if (complete)
                    Lower(index, pass.plane);
            }
        }
        --pass.plane;
    }
    coder = std::move(pass.coder);
    budget = pass.budget;
}

template <class Coder, bool kLimited>
void BitPlanes::CodePlanesPlain(Coder& coder, const QuadSet& set, unsigned lowest, int& budget) {
    CodePlanes<Coder, kLimited>(coder, set, lowest, budget);
}

#if defined(__x86_64__)
// Counting leading zeros is part of every bit's way to the next one; on some processors the plain instruction takes
// longer than all the rest. This is the same code with the newer ones.
template <class Coder, bool kLimited>
[[gnu::target("lzcnt,bmi,bmi2")]] void BitPlanes::CodePlanesFast(Coder& coder, const QuadSet& set, unsigned lowest,
                                                                 int& budget) {
    CodePlanes<Coder, kLimited>(coder, set, lowest, budget);
}
#endif

template <class Coder>
void BitPlanes::Code(Coder& coder, const QuadSet& set, unsigned lowest, bool limited, int& budget) {
    if (budget <= 0 || openPlanes == 0)
        return;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("bmi2")) { // all processors with these have lzcnt

        if (limited)
            CodePlanesFast<Coder, true>(coder, set, lowest, budget);
        else
            CodePlanesFast<Coder, false>(coder, set, lowest, budget);
        return;
    }
#endif
    if (limited)
        CodePlanesPlain<Coder, true>(coder, set, lowest, budget);
    else
        CodePlanesPlain<Coder, false>(coder, set, lowest, budget);
}

template void BitPlanes::Code(ArithmeticDecoder&, const QuadSet&, unsigned, bool, int&);
template void BitPlanes::Code(ArithmeticEncoder&, const QuadSet&, unsigned, bool, int&);

} // namespace codec

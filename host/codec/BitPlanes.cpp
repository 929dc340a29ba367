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
void BitPlanes::Lower(unsigned quad, unsigned plane) {
    Quad& q = quads[quad];
    q.next = 0;
    unsigned top = 0;
    for (unsigned c = 0; c < channels; ++c) {
        if (q.plane[c] == plane)
            --q.plane[c];
        top = std::max<unsigned>(top, q.plane[c]);
    }
    pending[plane].Remove(quad);
    if (--count[plane] == 0)
        openPlanes &= ~(1U << plane);
    if (top > 0) {
        pending[top].Insert(quad);
        ++count[top];
        openPlanes |= 1U << top;
    }
}

namespace {

// Tables 4.A.35 and 4.A.36: the fewer bits are left, the nearer to one half.
unsigned Limit(unsigned p0, int budget) {
    if (budget >= 14)
        return p0;
    const unsigned least = 1U << (14 - budget);
    return std::clamp(p0, least, kProbabilityScale - least);
}

// How one channel's lines of a quad are coded in one plane.
struct ChannelRows {
    const std::uint16_t* zero = nullptr;
    const std::uint16_t* nonzero = nullptr;

    [[gnu::always_inline]] ChannelRows(const Quad& quad, unsigned channel, unsigned plane) {
        const PlaneModel& model = kPlaneModels[quad.cbandSi[channel]];
        const unsigned distance = model.topPlane - plane;
        zero = model.ZeroRow(distance);
        nonzero = distance > 0 ? model.NonzeroRow(distance) : zero; // in the top plane all lines are zero so far
    }
};

// What all quads of a pass have in common.
template <class Coder> struct Pass {
    Coder coder;
    int budget;
    unsigned plane;
    const QuantisedLines* wanted;
};

// Codes the plane in one line of one channel. `due`: its bit is coded, only the sign is missing. False when the budget
// ended before the sign.
template <class Coder, bool kLimited>
[[gnu::always_inline]] inline bool CodeLine(Pass<Coder>& pass, Quad& quad, const ChannelRows& rows, unsigned position,
                                            unsigned channel, unsigned firstLine, bool due) {
    const unsigned element = 2 * position + channel;
    const unsigned magnitude = quad.magnitude[element];
    if (!due) {
        if (position == 0) {
            quad.higher[channel] |= quad.current[channel];
            quad.current[channel] = 0;
        }
        const unsigned current = quad.current[channel];
        const unsigned context = kSpectralContext[quad.higher[channel]][kContextPosition[position] + current];
        const unsigned history = std::min<unsigned>(magnitude >> pass.plane, kLargestHigherBits) - 1;
        unsigned p0 = *(magnitude == 0 ? rows.zero + context : rows.nonzero + history);
        if constexpr (kLimited)
            p0 = Limit(p0, pass.budget);
        unsigned wantedBit = 0;
        if constexpr (Coder::kEncodes) {
            const int line = (*pass.wanted)[channel][firstLine + position];
            wantedBit = static_cast<unsigned>(std::abs(line)) >> (pass.plane - 1) & 1;
            if (magnitude == 0 && pass.coder.NearEnd())
                wantedBit = 0;
        }
        const unsigned bit = pass.coder.Bit(p0, pass.budget, wantedBit);
        quad.current[channel] = static_cast<std::uint8_t>(current << 1 | bit);
        if (bit == 0)
            return true;
        quad.magnitude[element] = static_cast<std::uint16_t>(magnitude | 1U << (pass.plane - 1));
        if (magnitude != 0)
            return true;
    }
    if (pass.budget <= 0)
        return false;
    unsigned wantedSign = 0;
    if constexpr (Coder::kEncodes)
        wantedSign = (*pass.wanted)[channel][firstLine + position] < 0 ? 1 : 0;
    const unsigned sign = pass.coder.Bit(kSignP0, pass.budget, wantedSign);
    quad.negative = static_cast<std::uint8_t>(quad.negative | sign << element);
    return true;
}

// Codes the plane in the quad's lines from quad.next on, in the channels that take part. False, with the place to go on
// in quad.next, when the budget ended before the last one.
template <class Coder, bool kLimited, bool kFirst, bool kSecond>
[[gnu::always_inline]] inline bool CodeQuad(Pass<Coder>& pass, Quad& quad, unsigned firstLine) {
    const ChannelRows first(quad, kFirst ? 0 : 1, pass.plane);
    const ChannelRows second(quad, kSecond ? 1 : 0, pass.plane);
    constexpr unsigned kLast = 2 * (kQuadLines - 1) + (kSecond ? 1 : 0);
    const unsigned start = quad.next;
    bool due = quad.signDue;
    quad.signDue = false;
#pragma GCC unroll 8
    for (unsigned element = kFirst ? 0 : 1; element <= kLast; element += kFirst && kSecond ? 1 : 2) {
        if (element < start)
            continue;
        const unsigned channel = element & 1;
        const unsigned position = element >> 1;
        if (!CodeLine<Coder, kLimited>(pass, quad, channel == 0 ? first : second, position, channel, firstLine, due)) {
            quad.next = static_cast<std::uint8_t>(element);
            quad.signDue = true;
            return false;
        }
        due = false;
        if (pass.budget <= 0 && element != kLast) {
            quad.next = static_cast<std::uint8_t>(element + 1);
            return false;
        }
    }
    return true;
}

} // namespace

template <class Coder, bool kLimited>
[[gnu::always_inline]] inline void BitPlanes::CodePlanes(Coder& coder, const QuadSet& set, unsigned lowest,
                                                         int& budget) {
    // A copy that nothing else points to can stay in registers.
    Pass<Coder> pass{std::move(coder), budget, kLargestPlane, wanted};
    for (; pass.plane >= lowest && pass.budget > 0; --pass.plane) {
        if ((openPlanes >> pass.plane & 1) == 0)
            continue;
        for (unsigned w = 0; w < QuadSet::kWords && pass.budget > 0; ++w) {
            std::uint64_t left = pending[pass.plane].Word(w) & set.Word(w);
            for (; left != 0 && pass.budget > 0; left &= left - 1) {
                const unsigned index = w * 64 + static_cast<unsigned>(std::countr_zero(left));
                Quad& quad = quads[index];
                const bool first = quad.plane[0] == pass.plane;
                const bool second = quad.plane[1] == pass.plane;
                bool complete = false;
                if (first && second)
                    complete = CodeQuad<Coder, kLimited, true, true>(pass, quad, index * kQuadLines);
                else if (first)
                    complete = CodeQuad<Coder, kLimited, true, false>(pass, quad, index * kQuadLines);
                else
                    complete = CodeQuad<Coder, kLimited, false, true>(pass, quad, index * kQuadLines);
                if (complete)
                    Lower(index, pass.plane);
            }
        }
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
    if (__builtin_cpu_supports("lzcnt") && __builtin_cpu_supports("bmi2")) {
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

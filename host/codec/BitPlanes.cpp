#include "host/codec/BitPlanes.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

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
    const std::uint8_t* contexts = nullptr;

    ChannelRows(const Quad& quad, unsigned channel, unsigned plane) {
        const PlaneModel& model = kPlaneModels[quad.cbandSi[channel]];
        const unsigned distance = model.topPlane - plane;
        zero = model.ZeroRow(distance);
        if (distance > 0)
            nonzero = model.NonzeroRow(distance);
        contexts = kSpectralContext[quad.higher[channel]];
    }
};

// Codes the plane in all lines of the quad, from quad.next on. False when the budget ended before the last
// one.
template <class Coder, unsigned kChannels, bool kLimited>
bool CodeQuad(Coder& coder, Quad& quad, unsigned plane, int& budget, const QuantisedLines* wanted,
              unsigned firstLine) {
    const auto takesPart = [&](unsigned channel) { return quad.plane[channel] == plane; };
    const unsigned last = 2 * (kQuadLines - 1) + (kChannels == 2 && takesPart(1) ? 1 : 0);
    for (unsigned element = quad.next; element <= last; ++element) {
        const unsigned channel = element & 1;
        const unsigned position = element >> 1;
        if (channel >= kChannels || !takesPart(channel))
            continue;
        std::uint16_t& magnitude = quad.magnitude[element];
        if (!quad.signDue) {
            if (position == 0) {
                quad.higher[channel] |= quad.current[channel];
                quad.current[channel] = 0;
            }
            const ChannelRows rows(quad, channel, plane);
            unsigned p0 = 0;
            if (magnitude == 0)
                p0 = rows.zero[rows.contexts[kContextPosition[position] + quad.current[channel]]];
            else
                p0 = rows.nonzero[std::min<unsigned>(magnitude >> plane, kLargestHigherBits) - 1];
            if constexpr (kLimited)
                p0 = Limit(p0, budget);
            unsigned wantedBit = 0;
            if constexpr (Coder::kEncodes) {
                const int line = (*wanted)[channel][firstLine + position];
                wantedBit = static_cast<unsigned>(std::abs(line)) >> (plane - 1) & 1;
                if (magnitude == 0 && coder.NearEnd())
                    wantedBit = 0;
            }
            const unsigned bit = coder.Bit(p0, budget, wantedBit);
            quad.signDue = magnitude == 0 && bit != 0;
            magnitude = static_cast<std::uint16_t>(magnitude | bit << (plane - 1));
            quad.current[channel] = static_cast<std::uint8_t>(quad.current[channel] << 1 | bit);
        }
        if (quad.signDue) {
            quad.next = static_cast<std::uint8_t>(element);
            if (budget <= 0)
                return false;
            unsigned wantedSign = 0;
            if constexpr (Coder::kEncodes)
                wantedSign = (*wanted)[channel][firstLine + position] < 0 ? 1 : 0;
            const unsigned sign = coder.Bit(kSignP0, budget, wantedSign);
            quad.negative = static_cast<std::uint8_t>(quad.negative | sign << element);
            quad.signDue = false;
        }
        quad.next = static_cast<std::uint8_t>(element + 1);
        if (budget <= 0)
            return element == last;
    }
    return true;
}

} // namespace

template <class Coder, unsigned kChannels, bool kLimited>
void BitPlanes::CodePlanes(Coder& coder, const QuadSet& set, unsigned lowest, int& budget) {
    for (unsigned plane = kLargestPlane; plane >= lowest; --plane) {
        if (budget <= 0)
            return;
        if ((openPlanes >> plane & 1) == 0)
            continue;
        for (unsigned w = 0; w < QuadSet::kWords; ++w) {
            std::uint64_t left = pending[plane].Word(w) & set.Word(w);
            for (; left != 0; left &= left - 1) {
                const unsigned quad = w * 64 + static_cast<unsigned>(std::countr_zero(left));
                if (CodeQuad<Coder, kChannels, kLimited>(coder, quads[quad], plane, budget, wanted,
                                                         quad * kQuadLines))
                    Lower(quad, plane);
                if (budget <= 0)
                    return;
            }
        }
    }
}

template <class Coder>
void BitPlanes::Code(Coder& coder, const QuadSet& set, unsigned lowest, bool limited, int& budget) {
    if (budget <= 0)
        return;
    if (channels == 2)
        limited ? CodePlanes<Coder, 2, true>(coder, set, lowest, budget)
                : CodePlanes<Coder, 2, false>(coder, set, lowest, budget);
    else
        limited ? CodePlanes<Coder, 1, true>(coder, set, lowest, budget)
                : CodePlanes<Coder, 1, false>(coder, set, lowest, budget);
}

template void BitPlanes::Code(ArithmeticDecoder&, const QuadSet&, unsigned, bool, int&);
template void BitPlanes::Code(ArithmeticEncoder&, const QuadSet&, unsigned, bool, int&);

} // namespace codec

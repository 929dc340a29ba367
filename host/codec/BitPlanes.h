// The quantised lines of a block, plane by plane (ISO/IEC 14496-3, 4.4.2.6: bsac_spectral_data), decoded and
// encoded by the same code.
//
// A line's magnitude is sent from the top plane of its coding band (weight 2^(topPlane - 1)) down to plane 1
// (weight 1), one bit a plane; the sign follows the first 1. Lines are visited in order, both channels of a
// line one after the other. The budget may end after any bit; the line then goes on when its turn comes
// again.
//
// The unit of the bookkeeping is the quad of four neighbouring lines, for both channels together: layers
// begin and end at quads, the contexts live in quads, and all lines of a quad are at the same plane but for
// the place where the budget ended. So finding what is still to be coded in a plane means looking at a set of
// 256 bits.
#pragma once

#include <array>
#include <cstdint>

#include "host/codec/ArithmeticDecoder.h"
#include "host/codec/ArithmeticEncoder.h"
#include "host/codec/BlockHeader.h"
#include "host/codec/BsacTables.h"

namespace codec {

// Quantised lines with their signs, in the order of the block's groups.
using QuantisedLines = std::array<std::array<std::int16_t, kBlockSamples>, kMaxChannels>;

// A set of quads of the block.
class QuadSet {
public:
    void Clear() {
        words.fill(0);
        occupied = 0;
    }
    // Adds the quads of the lines [firstLine, endLine); both are multiples of 4.
    void AddLines(int firstLine, int endLine) {
        const auto first = static_cast<unsigned>(firstLine) / kQuadLines;
        const auto end = static_cast<unsigned>(endLine) / kQuadLines;
        if (first < end && first / 64 == (end - 1) / 64) [[likely]]
            SetWord(first / 64, words[first / 64] | Mask(firstLine, endLine));
        else
            AddManyQuads(first, end);
    }
    // The quads of the lines [firstLine, endLine), some of those of one word, as its bits.
    [[nodiscard]] static std::uint64_t Mask(int firstLine, int endLine) {
        const auto first = static_cast<unsigned>(firstLine) / kQuadLines;
        const auto count = static_cast<unsigned>(endLine - firstLine) / kQuadLines;
        return ~std::uint64_t{0} >> (64 - count) << first % 64;
    }
    [[nodiscard]] static constexpr QuadSet All() {
        QuadSet set;
        set.words.fill(~std::uint64_t{0});
        set.occupied = (1U << set.words.size()) - 1;
        return set;
    }

    [[nodiscard]] bool Contains(unsigned quad) const { return (words[quad >> 6] >> (quad & 63) & 1) != 0; }

    // Bit w: some of the quads [64 * w, 64 * w + 64) are in the set.
    [[nodiscard]] unsigned Occupied() const { return occupied; }
    // These quads, first one = bit 0.
    [[nodiscard]] std::uint64_t Word(unsigned w) const { return words[w]; }
    void SetWord(unsigned w, std::uint64_t word) {
        words[w] = word;
        occupied = (occupied & ~(1U << w)) | (word != 0 ? 1U << w : 0U);
    }

private:
    void AddManyQuads(unsigned first, unsigned end);

    std::array<std::uint64_t, kQuads / 64> words{};
    unsigned occupied = 0;
};

// One value for each line of a quad in each channel, at 4 * channel + line: as many as a vector instruction takes.
using QuadLanes = std::array<std::uint16_t, kMaxChannels * kQuadLines>;

struct alignas(64) Quad {
    QuadLanes magnitude{};
    // What to add to a line's context for its place in the row, see PlaneRow: 0 while the line is 0.
    QuadLanes history{};
    std::array<const PlaneRow*, kMaxChannels> row{}; // of this plane
    std::array<std::uint8_t, kMaxChannels> higher{}; // lines with a 1 in a higher plane, first line = bit 3
    std::array<std::uint8_t, kMaxChannels> node{};   // of this plane's tree of contexts, by the bits so far
    std::uint8_t negative = 0;                       // bit 4 * channel + line
    // Where the budget ended inside this plane, else 0: twice the 2 * line + channel that still lacks it, and 1 more when
    // only the sign is missing.
    std::uint8_t pause = 0;
};

// What is to be coded: these quads, from the highest plane still to come, which the caller may know, down to plane `lowest`
// (>= 1).
struct PlaneTask {
    const QuadSet& quads;
    unsigned highest = kLargestPlane; // at most
    unsigned lowest = 1;
    bool thenAll = false; // when budget is left, go on with the planes of all quads
    bool limited = false; // keep p0 within the limits of table 4.A.35 while fewer than 14 bits are left
};

class BitPlanes {
public:
    // Forgets all lines. An encoder gives the lines it wants coded; they must outlive the block.
    void Reset(unsigned channelCount, const QuantisedLines* wantedLines = nullptr);

    // The lines [firstLine, endLine), which are whole quads of one coding band, become known: each channel has all
    // planes of its cband_si to come. Returns the highest one, 0 when there are none.
    unsigned Open(int firstLine, int endLine, const std::array<std::uint8_t, kMaxChannels>& cbandSi);

    // Codes planes until the coder's budget is spent.
    template <class Coder> void Code(Coder& coder, const PlaneTask& task);

    [[nodiscard]] bool Complete() const { return openPlanes == 0; }

    // Quads that were opened with any plane since Reset, for those who look for lines that are not 0.
    [[nodiscard]] const QuadSet& Opened() const { return opened; }
    [[nodiscard]] const Quad& At(unsigned quad) const { return quads[quad]; }

    // The line's value as coded so far.
    [[nodiscard]] int Line(unsigned channel, unsigned line) const;

private:
    // The quads that are at a plane. One of two channels with different planes is in two of these, and the channel with the
    // lower plane waits.
    struct Front {
        std::array<std::array<std::uint64_t, kMaxChannels>, kQuads / 64> quads{}; // the 64 quads of a word, by channel
        unsigned occupied = 0;                                                    // bit w: some bit of quads[w] is set
    };

    template <class Coder> void CodePlanes(Coder& coder, const PlaneTask& task);
    template <class Coder> void CodePlanesPlain(Coder& coder, const PlaneTask& task);
    template <class Coder> void CodePlanesFast(Coder& coder, const PlaneTask& task);

    unsigned channels = 1;
    const QuantisedLines* wanted = nullptr;
    std::array<Quad, kQuads> quads;
    std::array<Front, kLargestPlane + 1> fronts; // by plane
    unsigned openPlanes = 0;                     // bit p: some quad is at plane p, p >= 1
    QuadSet opened;
};

} // namespace codec

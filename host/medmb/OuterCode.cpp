#include "host/medmb/OuterCode.h"

// The library's header does not say that it is C.
extern "C" {
#include <fec.h>
}

#include <algorithm>
#include <array>
#include <vector>

namespace medmb {

using wire::ByteSpan;
using wire::ByteVector;

namespace {

constexpr std::uint8_t kSync = 0x47;
constexpr int kParityBytes = 16;
// Of the twelve packets in sight this many must begin with 0x47 before a phase is tried; bit errors spoil a few.
constexpr int kHitsToTry = 8;
// With fewer the phase is wrong, not the signal.
constexpr int kHitsToStay = 4;
constexpr std::size_t kCompactAbove = 1 << 16;

// Where byte i of a packet stands in the interleaved stream, counted from its first byte.
constexpr std::array<std::uint16_t, kCodewordBytes> MakeOffsets() {
    std::array<std::uint16_t, kCodewordBytes> offsets{};
    for (std::size_t i = 0; i < kCodewordBytes; ++i)
        offsets[i] = static_cast<std::uint16_t>(i + kCodewordBytes * (i % kInterleaverBranches));
    return offsets;
}

constexpr auto kOffsets = MakeOffsets();

} // namespace

struct OuterDecoder::Code {
    // Field polynomial, first root, root spacing, parity bytes, leading zeros of the shortened code.
    void* handle = init_rs_char(8, 0x11D, 0, 1, kParityBytes, 255 - static_cast<int>(kCodewordBytes));
    ~Code() { free_rs_char(handle); }
};

OuterDecoder::OuterDecoder() : code(std::make_unique<Code>()) {}

OuterDecoder::~OuterDecoder() = default;

void OuterDecoder::Reset() {
    gap = gap || locked || !stream.empty();
    stream.clear();
    lostBytes.clear();
    position = lossEnd = 0;
    locked = false;
}

void OuterDecoder::Append(ByteSpan bytes, bool lost) {
    stream.insert(stream.end(), bytes.begin(), bytes.end());
    lostBytes.insert(lostBytes.end(), bytes.size(), lost ? 1 : 0);
    if (lost)
        lossEnd = stream.size();
}

bool OuterDecoder::Push(ByteSpan bytes, ByteVector& packets) {
    Append(bytes, false);
    return Drain(packets);
}

bool OuterDecoder::PushLost(std::size_t count, ByteVector& packets) {
    const ByteVector zeros(count, 0);
    Append(zeros, true);
    return Drain(packets);
}

// How many of the twelve packets that begin at `at` and after it have their 0x47; lost ones count as hits.
int OuterDecoder::SyncHits(std::size_t at) const {
    int hits = 0;
    for (std::size_t row = 0; row < kInterleaverBranches; ++row) {
        const std::size_t i = at + row * kCodewordBytes;
        hits += stream[i] == kSync || lostBytes[i] != 0 ? 1 : 0;
    }
    return hits;
}

// De-interleaves and corrects the packet at `at`. The number of corrected bytes, or -1.
int OuterDecoder::Decode(std::size_t at, std::uint8_t* codeword) const {
    std::array<int, kCodewordBytes> erasures{};
    int erased = 0;
    const std::uint8_t* from = stream.data() + at;
    for (std::size_t i = 0; i < kCodewordBytes; ++i)
        codeword[i] = from[kOffsets[i]];
    if (at < lossEnd) {
        for (std::size_t i = 0; i < kCodewordBytes; ++i)
            if (lostBytes[at + kOffsets[i]] != 0)
                erasures[static_cast<std::size_t>(erased++)] = static_cast<int>(i);
        if (erased > kParityBytes)
            return -1;
    }
    // The library counts positions in the full code: the leading zeros come first.
    constexpr int kPad = 255 - static_cast<int>(kCodewordBytes);
    for (int i = 0; i < erased; ++i)
        erasures[static_cast<std::size_t>(i)] += kPad;
    const int corrected = decode_rs_char(code->handle, codeword, erased != 0 ? erasures.data() : nullptr, erased);
    return corrected >= 0 && codeword[0] != kSync ? -1 : corrected;
}

// Looks for the packet phase in one packet's length; true when found. Otherwise that length is given up.
bool OuterDecoder::Acquire() {
    struct Candidate {
        int hits;
        std::size_t at;
    };
    std::vector<Candidate> candidates;
    for (std::size_t at = position; at < position + kCodewordBytes; ++at)
        if (lostBytes[at] == 0)
            if (const int hits = SyncHits(at); hits >= kHitsToTry)
                candidates.push_back({hits, at});
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.hits > b.hits; });
    for (const Candidate& candidate : candidates) {
        std::array<std::uint8_t, kCodewordBytes> codeword;
        if (Decode(candidate.at, codeword.data()) < 0)
            continue;
        position = candidate.at;
        locked = true;
        return true;
    }
    position += kCodewordBytes;
    return false;
}

bool OuterDecoder::Drain(ByteVector& packets) {
    bool gapBeforeFirst = false;
    const std::size_t sizeBefore = packets.size();
    for (;;) {
        // Acquiring looks at every phase, so it needs one packet more.
        const std::size_t need = kInterleaverSpan + (locked ? 0 : kCodewordBytes);
        if (position + need > stream.size())
            break;
        if (!locked && !Acquire()) {
            gap = gap || counters.packets != 0;
            continue;
        }
        if (position + kInterleaverSpan > stream.size())
            break;
        std::array<std::uint8_t, kCodewordBytes> codeword;
        const int corrected = Decode(position, codeword.data());
        if (corrected < 0 && SyncHits(position) < kHitsToStay) {
            locked = false;
            gap = true;
            ++counters.resyncs;
            continue;
        }
        const bool syncLost = lostBytes[position] != 0;
        position += kCodewordBytes;
        if (corrected < 0 && syncLost) {
            // Nothing of this packet is worth handing on.
            gap = true;
            continue;
        }
        ++counters.packets;
        counters.corrected += corrected > 0 ? 1 : 0;
        counters.bad += corrected < 0 ? 1 : 0;
        counters.bytesCorrected += corrected > 0 ? static_cast<std::uint64_t>(corrected) : 0;
        if (corrected < 0) {
            codeword[0] = kSync;
            codeword[1] |= 0x80;
        }
        if (gap && packets.size() == sizeBefore)
            gapBeforeFirst = true;
        gap = false;
        packets.insert(packets.end(), codeword.begin(), codeword.begin() + kTransportPacketBytes);
    }
    Compact();
    return gapBeforeFirst;
}

void OuterDecoder::Compact() {
    if (position < kCompactAbove)
        return;
    const auto count = static_cast<std::ptrdiff_t>(position);
    stream.erase(stream.begin(), stream.begin() + count);
    lostBytes.erase(lostBytes.begin(), lostBytes.begin() + count);
    lossEnd -= std::min(lossEnd, position);
    position = 0;
}

} // namespace medmb

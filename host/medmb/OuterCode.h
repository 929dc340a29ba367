// The outer code of T-DMB television (TS 102 427): convolutional de-interleaver and RS(204,188), sub-channel bytes in,
// transport packets out.
//
// Interleaver: twelve branches, branch j delayed by 17 j bytes of its own, that is 204 j bytes of the stream. So byte i of
// the packet whose first byte stands at offset s of the interleaved stream stands at s + i + 204 (i mod 12), and the first
// byte of every packet is not delayed at all: 0x47 at a distance of 204 in the raw bytes gives packet and branch phase at
// once. Code: GF(256) with 0x11D, roots a^0 to a^15, shortened from (255,239). No energy dispersal, no inverted sync.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "host/wire/Bytes.h"

namespace medmb {

inline constexpr std::size_t kTransportPacketBytes = 188;
inline constexpr std::size_t kCodewordBytes = 204;
inline constexpr std::size_t kInterleaverBranches = 12;
// Bytes of the stream that one packet is spread over.
inline constexpr std::size_t kInterleaverSpan = kCodewordBytes * kInterleaverBranches;

class OuterDecoder {
public:
    struct Counters {
        std::uint64_t packets = 0;
        std::uint64_t corrected = 0; // packets
        std::uint64_t bad = 0;
        std::uint64_t bytesCorrected = 0;
        std::uint64_t resyncs = 0;
    };

    OuterDecoder();
    ~OuterDecoder();
    OuterDecoder(const OuterDecoder&) = delete;
    OuterDecoder& operator=(const OuterDecoder&) = delete;

    // Appends whole packets to `packets`; one that cannot be repaired has its transport error indicator set. Returns
    // true when something is missing before the first of them.
    bool Push(wire::ByteSpan bytes, wire::ByteVector& packets);
    // `count` bytes of the sub-channel are known to be lost: the phase is kept, their places count as erasures.
    bool PushLost(std::size_t count, wire::ByteVector& packets);
    // Forgets phase and bytes; the counters stay.
    void Reset();

    [[nodiscard]] bool Locked() const { return locked; }
    [[nodiscard]] const Counters& Count() const { return counters; }

private:
    struct Code;

    void Append(wire::ByteSpan bytes, bool lost);
    bool Drain(wire::ByteVector& packets);
    [[nodiscard]] bool Acquire();
    [[nodiscard]] int SyncHits(std::size_t at) const;
    [[nodiscard]] int Decode(std::size_t at, std::uint8_t* codeword) const;
    void Compact();

    std::unique_ptr<Code> code;
    wire::ByteVector stream;
    wire::ByteVector lostBytes; // one flag a byte of stream
    std::size_t position = 0;   // of the next packet's first byte
    std::size_t lossEnd = 0;    // no lost byte at or after this offset
    bool locked = false;
    bool gap = false; // something is missing before the next packet
    Counters counters;
};

} // namespace medmb

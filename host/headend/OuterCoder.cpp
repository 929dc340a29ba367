#include "host/headend/OuterCoder.h"

#include "host/wire/TsPacket.h"

namespace headend {

namespace {

struct Field {
    std::array<std::uint8_t, 512> power{}; // a^i, twice over so that sums of two logarithms need no reduction
    std::array<std::uint8_t, 256> log{};
};

consteval Field MakeField() {
    Field field;
    unsigned value = 1;
    for (unsigned i = 0; i < 255; ++i) {
        field.power[i] = field.power[i + 255] = static_cast<std::uint8_t>(value);
        field.log[value] = static_cast<std::uint8_t>(i);
        value <<= 1;
        if ((value & 0x100) != 0)
            value ^= 0x11D;
    }
    return field;
}

constexpr Field kField = MakeField();

constexpr std::uint8_t Multiply(std::uint8_t a, std::uint8_t b) {
    return a == 0 || b == 0 ? std::uint8_t{0} : kField.power[kField.log[a] + kField.log[b]];
}

// The product of (x - a^i) for i = 0..15; coefficient of x^15 first, the leading 1 left out.
consteval std::array<std::uint8_t, kParitySize> MakeGenerator() {
    std::array<std::uint8_t, kParitySize + 1> g{};
    g[0] = 1;
    for (unsigned root = 0; root < kParitySize; ++root) {
        for (unsigned i = root + 1; i > 0; --i)
            g[i] = g[i] ^ Multiply(g[i - 1], kField.power[root]);
    }
    std::array<std::uint8_t, kParitySize> out{};
    for (unsigned i = 0; i < kParitySize; ++i)
        out[i] = g[i + 1];
    return out;
}

constexpr auto kGenerator = MakeGenerator();

// For each feedback byte what it adds to the register.
consteval std::array<std::array<std::uint8_t, kParitySize>, 256> MakeFeedback() {
    std::array<std::array<std::uint8_t, kParitySize>, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        for (unsigned i = 0; i < kParitySize; ++i)
            table[byte][i] = Multiply(static_cast<std::uint8_t>(byte), kGenerator[i]);
    }
    return table;
}

constexpr auto kFeedback = MakeFeedback();

} // namespace

std::array<std::uint8_t, kParitySize> ReedSolomonParity(std::span<const std::uint8_t, 188> packet) {
    std::array<std::uint8_t, kParitySize> parity{};
    for (const std::uint8_t byte : packet) {
        const auto& feedback = kFeedback[byte ^ parity[0]];
        for (std::size_t i = 0; i + 1 < kParitySize; ++i)
            parity[i] = parity[i + 1] ^ feedback[i];
        parity[kParitySize - 1] = feedback[kParitySize - 1];
    }
    return parity;
}

wire::ByteVector OuterCode(wire::ByteSpan packets, InterleaverStart start) {
    const std::size_t count = packets.size() / wire::kTsPacketSize;
    wire::ByteVector coded;
    coded.reserve(count * kCodewordSize);
    for (std::size_t i = 0; i < count; ++i) {
        const auto packet = packets.subspan(i * wire::kTsPacketSize).first<wire::kTsPacketSize>();
        const auto parity = ReedSolomonParity(packet);
        coded.insert(coded.end(), packet.begin(), packet.end());
        coded.insert(coded.end(), parity.begin(), parity.end());
    }

    // Branch j delays by 17 j turns of the commutator; a turn is twelve bytes, and 204 bytes are whole turns.
    wire::ByteVector out(coded.size());
    for (std::size_t at = 0; at < coded.size(); ++at) {
        const std::size_t delay = at % kBranches * kBranchUnit * kBranches;
        if (at >= delay)
            out[at] = coded[at - delay];
        else if (start == InterleaverStart::kCyclic && coded.size() >= delay)
            out[at] = coded[coded.size() + at - delay];
    }
    return out;
}

} // namespace headend

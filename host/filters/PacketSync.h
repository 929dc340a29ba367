// Finds transport packets in a run of bytes that may begin anywhere: at 188 bytes each, or at 204 with 16 check bytes
// behind each packet (ISO/IEC 13818-1 2.4.3.2, EN 300 429 5.3.2).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace filters {

using Bytes = std::vector<std::uint8_t>;
using ByteSpan = std::span<const std::uint8_t>;
// Takes one packet of 188 bytes, valid during the call.
using PacketSink = std::function<void(ByteSpan)>;

class PacketSync {
public:
    // Gives every packet that is certain by now.
    void Push(ByteSpan bytes, const PacketSink& sink);
    // No more bytes follow: gives the packets that waited for proof.
    void Finish(const PacketSink& sink);
    // Forgets everything but the distance of packets, which a file keeps.
    void Reset();

    // Bytes from packet to packet, 0 while unknown.
    [[nodiscard]] std::size_t Stride() const { return stride_; }
    [[nodiscard]] std::uint64_t SkippedBytes() const { return skipped_; }

private:
    void Work(const PacketSink& sink, bool final);
    [[nodiscard]] bool Lock(bool final);
    [[nodiscard]] bool IsPacketRow(std::size_t at, std::size_t stride, bool final) const;

    Bytes buffer_;
    std::size_t at_ = 0; // in the buffer: the next packet, or where to look for one
    std::size_t stride_ = 0;
    bool locked_ = false;
    std::uint64_t skipped_ = 0;
};

} // namespace filters

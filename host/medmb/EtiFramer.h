// Finds ETI frames in a byte stream that may begin anywhere, carry foreign bytes between frames, or lose bytes inside one.
//
// Understood: raw (6144 bytes a frame), framed and streamed files (frames without padding behind a length word), and
// anything whose frames keep their synchronisation word and header. A frame counts when its header check sum is right,
// or when it stands exactly where the next one was due. A wrong MST check sum is not held against it, unless another
// frame begins inside: then bytes were lost and the frame is given up.
#pragma once

#include <cstdint>
#include <optional>

#include "host/wire/EtiFrame.h"

namespace medmb {

class EtiFramer {
public:
    struct Counters {
        std::uint64_t frames = 0;
        std::uint64_t bytesSkipped = 0; // neither frame nor padding
        std::uint64_t headersBad = 0;   // delivered with a wrong header check sum
        std::uint64_t mstBad = 0;       // delivered with a wrong main stream check sum
        std::uint64_t truncated = 0;    // begun, but cut off by the next
    };

    void Push(wire::ByteSpan bytes);
    // No more bytes will come: what is left may be a last frame without padding.
    void Finish() { finished = true; }
    // Forgets everything but the counters.
    void Reset();

    // The next frame, or nothing until more bytes have been pushed. It is valid until the next call of any member.
    [[nodiscard]] std::optional<wire::EtiFrame> Next();

    [[nodiscard]] const Counters& Count() const { return counters; }

private:
    static constexpr std::size_t kHeadBytes = 6;

    enum class Verdict : std::uint8_t { Frame, NoFrame, NeedMore };

    [[nodiscard]] wire::ByteSpan Rest() const { return wire::ByteSpan(buffer).subspan(position); }
    [[nodiscard]] bool SkipToSync();
    [[nodiscard]] bool NextFollowsContent(const wire::EtiFrame& frame) const;
    [[nodiscard]] Verdict Judge(const wire::EtiFrame& frame) const;
    [[nodiscard]] std::optional<std::size_t> HeaderInside(const wire::EtiFrame& frame) const;
    void Skip(std::size_t count);

    wire::ByteVector buffer;
    std::size_t position = 0; // of the next byte to look at
    // Bytes before it are the padding of the frame delivered last; at the very beginning, the head of a framed file: number of
    // frames and length word.
    std::size_t paddingUntil = kHeadBytes;
    std::size_t due = 0; // where a raw stream's next frame begins
    bool locked = false;
    bool finished = false;
    Counters counters;
};

} // namespace medmb

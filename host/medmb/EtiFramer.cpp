#include "host/medmb/EtiFramer.h"

#include <algorithm>

namespace medmb {

using wire::ByteSpan;
using wire::EtiFrame;

namespace {

// Framed files put a length word of this many bytes before each frame.
constexpr std::size_t kLengthWordBytes = 2;
constexpr std::size_t kCompactAbove = 1 << 16;

} // namespace

void EtiFramer::Push(ByteSpan bytes) {
    if (position > kCompactAbove) {
        buffer.erase(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(position));
        paddingUntil -= std::min(paddingUntil, position);
        due -= std::min(due, position);
        position = 0;
    }
    buffer.insert(buffer.end(), bytes.begin(), bytes.end());
}

void EtiFramer::Reset() {
    buffer.clear();
    position = due = 0;
    paddingUntil = kHeadBytes;
    locked = finished = false;
}

void EtiFramer::Skip(std::size_t count) {
    const std::size_t junkFrom = std::max(position, paddingUntil);
    position += count;
    if (position > junkFrom)
        counters.bytesSkipped += position - junkFrom;
}

// Moves to the next synchronisation word; false when the bytes at hand hold none.
bool EtiFramer::SkipToSync() {
    const ByteSpan rest = Rest();
    std::size_t at = 0;
    while (at + wire::kEtiSyncBytes <= rest.size() && !wire::HasEtiSync(rest.subspan(at, wire::kEtiSyncBytes)))
        ++at;
    Skip(at);
    return at + wire::kEtiSyncBytes <= rest.size();
}

// Another frame begins right behind the content, or behind a length word: this one is of a streamed file, and whole.
bool EtiFramer::NextFollowsContent(const EtiFrame& frame) const {
    for (const std::size_t at : {frame.Length(), frame.Length() + kLengthWordBytes})
        if (Rest().size() >= at + wire::kEtiSyncBytes && wire::HasEtiSync(Rest().subspan(at)))
            return true;
    return false;
}

EtiFramer::Verdict EtiFramer::Judge(const EtiFrame& frame) const {
    if (frame.HeaderCrcOk() || (locked && position == due) || NextFollowsContent(frame))
        return Verdict::Frame;
    if (Rest().size() < wire::kEtiFrameBytes + wire::kEtiSyncBytes)
        return finished ? Verdict::NoFrame : Verdict::NeedMore;
    return wire::HasEtiSync(Rest().subspan(wire::kEtiFrameBytes)) ? Verdict::Frame : Verdict::NoFrame;
}

// Where another frame begins before this one, with its padding, can be over.
std::optional<std::size_t> EtiFramer::HeaderInside(const EtiFrame& frame) const {
    const std::size_t end = std::min(wire::kEtiFrameBytes, Rest().size());
    for (std::size_t at = wire::kEtiSyncBytes; at + wire::kEtiSyncBytes <= end; ++at) {
        const ByteSpan rest = Rest().subspan(at);
        if (!wire::HasEtiSync(rest.first(wire::kEtiSyncBytes)))
            continue;
        if (at > frame.Length() && rest.size() < 8)
            return at;
        const auto inner = EtiFrame::Parse(rest);
        if ((inner && inner->HeaderCrcOk()) || at > frame.Length())
            return at;
    }
    return std::nullopt;
}

std::optional<EtiFrame> EtiFramer::Next() {
    while (SkipToSync()) {
        const ByteSpan rest = Rest();
        const std::size_t length = EtiFrame::LengthFromHeader(rest);
        const bool headerCut = rest.size() < 8 || rest.size() < 8 + 4u * (rest[5] & 0x7Fu);
        if (length == 0 || rest.size() < length) {
            if ((length != 0 || headerCut) && !finished)
                return std::nullopt;
            Skip(1);
            continue;
        }
        const auto frame = EtiFrame::Parse(rest);
        const Verdict verdict = frame ? Judge(*frame) : Verdict::NoFrame;
        if (verdict == Verdict::NeedMore)
            return std::nullopt;
        if (verdict == Verdict::NoFrame) {
            Skip(1);
            continue;
        }
        const bool mstOk = frame->MstCrcOk();
        if (!mstOk) {
            // Were bytes lost inside? Not when the next frame is where it should be.
            const bool nextKnown = rest.size() >= wire::kEtiFrameBytes + wire::kEtiSyncBytes;
            if (!nextKnown && !finished && rest.size() < wire::kEtiFrameBytes + wire::kEtiSyncBytes && locked &&
                position == due)
                return std::nullopt;
            const bool inPlace =
                NextFollowsContent(*frame) || (nextKnown && wire::HasEtiSync(rest.subspan(wire::kEtiFrameBytes)));
            if (!inPlace) {
                if (const auto inner = HeaderInside(*frame)) {
                    ++counters.truncated;
                    Skip(*inner);
                    locked = false;
                    continue;
                }
            }
        }
        ++counters.frames;
        counters.headersBad += frame->HeaderCrcOk() ? 0 : 1;
        counters.mstBad += mstOk ? 0 : 1;
        locked = true;
        // What follows is padding up to the next raw frame, or a length word.
        due = position + wire::kEtiFrameBytes;
        paddingUntil = std::max(due, position + length + kLengthWordBytes);
        const bool nextIsRaw = rest.size() >= wire::kEtiFrameBytes + wire::kEtiSyncBytes &&
                               wire::HasEtiSync(rest.subspan(wire::kEtiFrameBytes));
        position += nextIsRaw ? wire::kEtiFrameBytes : length;
        return frame;
    }
    return std::nullopt;
}

} // namespace medmb

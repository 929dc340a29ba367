#include "host/filters/PacketSync.h"

#include "host/wire/TsPacket.h"

namespace filters {

namespace {

constexpr std::size_t kStrides[] = {wire::kTsPacketSize, 204};
// Four sync bytes out of five in their places, the first two among them, are no accident: one in 2^31 offsets.
constexpr std::size_t kPlaces = 5;
constexpr std::size_t kProof = 4;

} // namespace

void PacketSync::Push(ByteSpan bytes, const PacketSink& sink) {
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    Work(sink, false);
}

void PacketSync::Finish(const PacketSink& sink) {
    Work(sink, true);
    skipped_ += buffer_.size() - at_;
    buffer_.clear();
    at_ = 0;
    locked_ = false;
}

void PacketSync::Reset() {
    buffer_.clear();
    at_ = 0;
    locked_ = false;
}

void PacketSync::Work(const PacketSink& sink, bool final) {
    while (locked_ || Lock(final)) {
        const std::size_t left = buffer_.size() - at_;
        if (left < wire::kTsPacketSize || (left < stride_ && !final))
            break;
        if (buffer_[at_] != wire::kTsSyncByte) {
            // One spoilt sync byte costs one packet; when the next packet is not in its place either, look anew.
            if (left <= stride_ && !final)
                break;
            locked_ = left > stride_ && buffer_[at_ + stride_] == wire::kTsSyncByte;
            const std::size_t step = locked_ ? stride_ : 1;
            at_ += step;
            skipped_ += step;
            continue;
        }
        sink(ByteSpan(buffer_).subspan(at_, wire::kTsPacketSize));
        at_ += std::min(stride_, left);
    }
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(at_));
    at_ = 0;
}

bool PacketSync::Lock(bool final) {
    for (; at_ < buffer_.size(); ++at_, ++skipped_) {
        if (buffer_[at_] != wire::kTsSyncByte)
            continue;
        const std::size_t longest = kStrides[std::size(kStrides) - 1];
        if (!final && buffer_.size() - at_ <= longest * (kPlaces - 1))
            return false; // not enough to tell
        for (const std::size_t stride : kStrides) {
            if (IsPacketRow(at_, stride, final)) {
                stride_ = stride;
                locked_ = true;
                return true;
            }
        }
    }
    return false;
}

bool PacketSync::IsPacketRow(std::size_t at, std::size_t stride, bool final) const {
    std::size_t hits = 0;
    for (std::size_t i = 0; i < kPlaces; ++i, at += stride) {
        if (at >= buffer_.size())
            return final && hits == i && at - stride + wire::kTsPacketSize <= buffer_.size();
        hits += buffer_[at] == wire::kTsSyncByte ? 1 : 0;
        if (i < 2 && hits <= i)
            return false;
    }
    return hits >= kProof;
}

} // namespace filters

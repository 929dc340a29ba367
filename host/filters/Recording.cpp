#include "host/filters/Recording.h"

#include <algorithm>
#include <cmath>

namespace filters {

namespace {

constexpr std::size_t kHeadBytes = 1u << 20;
constexpr std::size_t kTailBytes = 512u << 10;
constexpr std::size_t kProbeBytes = 256u << 10;
constexpr std::uint64_t kBaseMask = (std::uint64_t{1} << 33) - 1;
// More than any recording of this system lasts: such a length is a jump of the clock.
constexpr Ticks kLongest = 13 * 3600 * kTicksPerSecond;

// Looks for the tables only.
class Nobody final : public DemuxListener {
public:
    void OnStreams(const VideoFormat*, const AudioFormat*) override {}
    void OnVideo(AccessUnit) override {}
    void OnAudio(AccessUnit) override {}
    void OnClockLost() override {}
};

} // namespace

bool Recording::Open(const WCHAR* path) {
    Close();
    file_ = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (!IsOpen())
        return false;
    DWORD high = 0;
    const DWORD low = GetFileSize(file_, &high);
    size_ = static_cast<std::uint64_t>(high) << 32 | low;
    Measure();
    MoveTo(0);
    return true;
}

void Recording::Close() {
    if (IsOpen())
        CloseHandle(file_);
    file_ = INVALID_HANDLE_VALUE;
    size_ = 0;
    duration_ = 0;
}

Bytes Recording::Read(std::size_t size) {
    Bytes bytes(size);
    DWORD done = 0;
    if (!IsOpen() || ReadFile(file_, bytes.data(), static_cast<DWORD>(size), &done, nullptr) == FALSE)
        done = 0;
    bytes.resize(done);
    return bytes;
}

void Recording::MoveTo(std::uint64_t byte) {
    auto high = static_cast<LONG>(byte >> 32);
    (void)SetFilePointer(file_, static_cast<LONG>(byte & 0xFFFFFFFF), &high, FILE_BEGIN);
}

void Recording::Measure() {
    steady_ = false;
    duration_ = 0;
    MoveTo(0);
    Nobody nobody;
    Demultiplexer tables(nobody);
    PacketSync sync;
    const Bytes head = Read(kHeadBytes);
    const auto push = [&](ByteSpan packet) { tables.Push(packet); };
    sync.Push(head, push);
    if (head.size() < kHeadBytes)
        sync.Finish(push);
    if (tables.Streams() == nullptr)
        return;
    clockPid_ = tables.Streams()->clockPid;
    const std::vector<Reference> early = ReferencesIn(0, kHeadBytes);
    const std::uint64_t tail = size_ > kTailBytes ? size_ - kTailBytes : 0;
    const std::vector<Reference> late = ReferencesIn(tail, kTailBytes);
    if (early.size() < 2 || late.empty())
        return;
    first_ = early.front();
    // What the file would last at the pace of its beginning: a jump of the clock shows in the difference.
    const auto pace = static_cast<double>((early.back().base - first_.base) & kBaseMask) /
                      static_cast<double>(early.back().byte - first_.byte);
    const double guess = pace * static_cast<double>(size_);
    const Ticks measured = SinceStart(late.back().base);
    steady_ = measured > 0 && measured < kLongest && std::abs(static_cast<double>(measured) - guess) < 0.5 * guess;
    duration_ = steady_ ? measured : static_cast<Ticks>(std::clamp(guess, 0.0, static_cast<double>(kLongest)));
}

std::vector<Recording::Reference> Recording::ReferencesIn(std::uint64_t from, std::size_t size) {
    MoveTo(from);
    const Bytes bytes = Read(size);
    std::vector<Reference> list;
    PacketSync sync;
    const auto push = [&](ByteSpan data) {
        const auto packet = wire::TsPacket::Parse(data);
        if (packet && !packet->header.transportError && packet->header.pid == clockPid_ && packet->header.pcr)
            list.push_back({from, *packet->header.pcr / 300});
    };
    // In small steps, to know where each one lies.
    constexpr std::size_t kStep = 1024;
    const std::uint64_t begin = from;
    for (std::size_t at = 0; at < bytes.size(); at += kStep) {
        from = begin + at;
        sync.Push(ByteSpan(bytes).subspan(at, std::min(kStep, bytes.size() - at)), push);
    }
    sync.Finish(push);
    return list;
}

Ticks Recording::SinceStart(std::uint64_t base) const {
    return static_cast<Ticks>((base - first_.base) & kBaseMask);
}

Ticks Recording::Proportional(std::uint64_t byte) const {
    return size_ == 0 ? 0
                      : static_cast<Ticks>(static_cast<double>(duration_) * static_cast<double>(byte) /
                                           static_cast<double>(size_));
}

Ticks Recording::TimeOf(std::uint64_t pcr27MHz, std::uint64_t byte) const {
    const Ticks time = SinceStart(pcr27MHz / 300);
    return steady_ && time <= duration_ + kTicksPerSecond ? time : Proportional(byte);
}

std::uint64_t Recording::ByteOf(Ticks time) {
    if (time <= 0 || duration_ <= 0 || size_ == 0)
        return 0;
    std::uint64_t low = 0;
    std::uint64_t high = size_;
    Ticks lowTime = 0;
    Ticks highTime = duration_;
    std::uint64_t byte = 0;
    // Between two known places the file is nearly linear; a few looks find the place.
    for (int look = 0; look < 6; ++look) {
        if (highTime <= lowTime || high - low <= kProbeBytes / 8)
            break;
        const double share = static_cast<double>(time - lowTime) / static_cast<double>(highTime - lowTime);
        byte = low + static_cast<std::uint64_t>(std::clamp(share, 0.0, 1.0) * static_cast<double>(high - low));
        if (!steady_)
            break;
        const auto references =
            ReferencesIn(std::min(byte, size_ > kProbeBytes ? size_ - kProbeBytes : 0), kProbeBytes);
        if (references.empty())
            break;
        const Ticks there = SinceStart(references.front().base);
        if (std::abs(there - time) < kTicksPerSecond / 4)
            break;
        if (there < time) {
            low = references.front().byte;
            lowTime = there;
        } else {
            high = std::max(references.front().byte, low);
            highTime = there;
        }
    }
    return byte;
}

} // namespace filters

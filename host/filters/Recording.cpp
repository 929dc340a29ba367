#include "host/filters/Recording.h"

#include <algorithm>
#include <cmath>

namespace filters {

namespace {

constexpr std::size_t kProbeBytes = 256u << 10;

// Opens a file to be read; INVALID_HANDLE_VALUE when it cannot be.
HANDLE OpenFile(const WCHAR* path, std::uint64_t& size) {
    const HANDLE file =
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return file;
    DWORD high = 0;
    const DWORD low = GetFileSize(file, &high);
    size = static_cast<std::uint64_t>(high) << 32 | low;
    return file;
}

// False when the reading failed.
bool ReadFrom(HANDLE file, std::size_t size, Bytes& bytes) {
    bytes.resize(size);
    DWORD done = 0;
    const bool read = ReadFile(file, bytes.data(), static_cast<DWORD>(size), &done, nullptr) != FALSE;
    bytes.resize(read ? done : 0);
    return read;
}

void Place(HANDLE file, std::uint64_t byte) {
    auto high = static_cast<LONG>(byte >> 32);
    (void)SetFilePointer(file, static_cast<LONG>(byte & 0xFFFFFFFF), &high, FILE_BEGIN);
}

} // namespace

bool Recording::Open(const WCHAR* path) {
    Close();
    file_ = OpenFile(path, size_);
    if (!IsOpen())
        return false;
    const std::uint64_t tail = size_ > kTailBytes ? size_ - kTailBytes : 0;
    times_ = MeasureTimes(Part(0, kHeadBytes), Part(tail, kTailBytes), size_).value_or(RecordingTimes());
    MoveTo(0);
    return true;
}

void Recording::Close() {
    if (IsOpen())
        CloseHandle(file_);
    file_ = INVALID_HANDLE_VALUE;
    size_ = 0;
    lost_ = false;
    times_ = {};
}

Bytes Recording::Read(std::size_t size) {
    Bytes bytes;
    lost_ = lost_ || (IsOpen() && !ReadFrom(file_, size, bytes));
    return bytes;
}

void Recording::MoveTo(std::uint64_t byte) {
    Place(file_, byte);
}

Bytes Recording::Part(std::uint64_t from, std::size_t size) {
    MoveTo(from);
    return Read(size);
}

Ticks Recording::Proportional(std::uint64_t byte) const {
    return size_ == 0 ? 0
                      : static_cast<Ticks>(static_cast<double>(times_.duration) * static_cast<double>(byte) /
                                           static_cast<double>(size_));
}

Ticks Recording::TimeOf(std::uint64_t pcr27MHz, std::uint64_t byte) const {
    const Ticks time = TicksBetween(times_.first.base, pcr27MHz / 300);
    return times_.steady && time <= times_.duration + kTicksPerSecond ? time : Proportional(byte);
}

std::uint64_t Recording::ByteOf(Ticks time) {
    if (time <= 0 || times_.duration <= 0 || size_ == 0)
        return 0;
    std::uint64_t low = 0;
    std::uint64_t high = size_;
    Ticks lowTime = 0;
    Ticks highTime = times_.duration;
    std::uint64_t byte = 0;
    // Between two known places the file is nearly linear; a few looks find the place.
    for (int look = 0; look < 6; ++look) {
        if (highTime <= lowTime || high - low <= kProbeBytes / 8)
            break;
        const double share = static_cast<double>(time - lowTime) / static_cast<double>(highTime - lowTime);
        byte = low + static_cast<std::uint64_t>(std::clamp(share, 0.0, 1.0) * static_cast<double>(high - low));
        if (!times_.steady)
            break;
        const std::uint64_t probe = std::min(byte, size_ > kProbeBytes ? size_ - kProbeBytes : 0);
        const auto references = ClockReferencesIn(Part(probe, kProbeBytes), probe, times_.clockPid);
        if (references.empty())
            break;
        const Ticks there = TicksBetween(times_.first.base, references.front().base);
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

std::optional<unsigned> PlayingSeconds(const WCHAR* path) {
    std::uint64_t size = 0;
    const HANDLE file = OpenFile(path, size);
    if (file == INVALID_HANDLE_VALUE)
        return std::nullopt;
    const auto time = PlayingTime(size, [file](std::uint64_t from, std::size_t part) {
        Bytes bytes;
        Place(file, from);
        (void)ReadFrom(file, part, bytes);
        return bytes;
    });
    CloseHandle(file);
    if (!time)
        return std::nullopt;
    return static_cast<unsigned>((*time + kTicksPerSecond / 2) / kTicksPerSecond);
}

} // namespace filters

// A recorded file: where its packets lie, how long it lasts, and which byte belongs to which time.
#pragma once

#include "host/filters/RecordingTimes.h"
#include "platform/wince.h"

#include <optional>

namespace filters {

class Recording {
public:
    Recording() = default;
    ~Recording() { Close(); }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    // Opens the file and measures it. False when it cannot be opened; a file that holds no packets is open and empty.
    [[nodiscard]] bool Open(const WCHAR* path);
    void Close();
    [[nodiscard]] bool IsOpen() const { return file_ != INVALID_HANDLE_VALUE; }

    // The next bytes; fewer than asked at the end, none behind it or when the card is gone.
    [[nodiscard]] Bytes Read(std::size_t size);
    // A reading has failed since the file was opened.
    [[nodiscard]] bool IsLost() const { return lost_; }
    // Reading goes on here.
    void MoveTo(std::uint64_t byte);

    // 0 when the file tells no time.
    [[nodiscard]] Ticks Duration() const { return times_.duration; }
    [[nodiscard]] std::uint64_t Size() const { return size_; }
    // Where, shortly before a moment, reading has to begin.
    [[nodiscard]] std::uint64_t ByteOf(Ticks time);
    // The moment that a clock reference of 27 MHz read at or behind `byte` belongs to.
    [[nodiscard]] Ticks TimeOf(std::uint64_t pcr27MHz, std::uint64_t byte) const;

private:
    [[nodiscard]] Bytes Part(std::uint64_t from, std::size_t size);
    [[nodiscard]] Ticks Proportional(std::uint64_t byte) const;

    HANDLE file_ = INVALID_HANDLE_VALUE;
    std::uint64_t size_ = 0;
    bool lost_ = false;
    RecordingTimes times_;
};

// How long a file plays, in whole seconds; nothing when that cannot be known. Reads its beginning and its end.
[[nodiscard]] std::optional<unsigned> PlayingSeconds(const WCHAR* path);

} // namespace filters

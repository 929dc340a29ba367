// A recorded file: where its packets lie, how long it lasts, and which byte belongs to which time.
#pragma once

#include "host/filters/Demultiplexer.h"
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
    // Reading goes on here.
    void MoveTo(std::uint64_t byte);

    // 0 when the file tells no time.
    [[nodiscard]] Ticks Duration() const { return duration_; }
    [[nodiscard]] std::uint64_t Size() const { return size_; }
    // Where, shortly before a moment, reading has to begin.
    [[nodiscard]] std::uint64_t ByteOf(Ticks time);
    // The moment that a clock reference of 27 MHz read at or behind `byte` belongs to.
    [[nodiscard]] Ticks TimeOf(std::uint64_t pcr27MHz, std::uint64_t byte) const;

private:
    struct Reference {
        std::uint64_t byte = 0;
        std::uint64_t base = 0; // 90 kHz, 33 bits
    };
    void Measure();
    [[nodiscard]] std::vector<Reference> ReferencesIn(std::uint64_t from, std::size_t size);
    [[nodiscard]] Ticks SinceStart(std::uint64_t base) const;
    [[nodiscard]] Ticks Proportional(std::uint64_t byte) const;

    HANDLE file_ = INVALID_HANDLE_VALUE;
    std::uint64_t size_ = 0;
    std::uint16_t clockPid_ = 0x1FFF;
    Reference first_;
    Ticks duration_ = 0;
    bool steady_ = false; // one clock from the first byte to the last
};

} // namespace filters
